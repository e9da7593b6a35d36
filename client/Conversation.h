// One request to the helper and what came of it.
#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <variant>

#include "HalvoHelperXPC/HalvoHelperProtocol.h"
#include "platform/service/ServiceClient.h"

namespace halvo {

using Outcome = std::variant<std::string, bool, ServiceFailure>;

class Conversation {
 public:
  // Makes the request on the helper's proxy, giving exactly one of the two replies on.
  using Request = std::function<void(HalvoHelperProtocol& helper, const TextReply& text, const BoolReply& boolean)>;

  explicit Conversation(std::unique_ptr<ServiceClient> client);

  // Blocks until the helper has answered, however long that takes. `whileWaiting` is called on this thread about five
  // times a second once two seconds have passed.
  Outcome ask(
      const Request& request, const std::function<void()>& whileWaiting = [] {});

 private:
  std::unique_ptr<ServiceClient> client_;
};

}  // namespace halvo
