// One request to the helper and what came of it.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "HalvoHelperXPC/HalvoHelperProtocol.h"
#include "transport/ServiceClient.h"

namespace halvo {

// The request went out, and no reply belongs to it.
struct NoReply {
  bool operator==(const NoReply&) const = default;
};

// No reply came in the time that there was for it. It may still be worked on.
struct TimedOut {
  bool operator==(const TimedOut&) const = default;
};

using Outcome = std::variant<std::string, bool, NoReply, TimedOut, ServiceFailure>;

// When a person is told that the request takes its time, and how often there is something new.
struct Pace {
  std::chrono::milliseconds patience = std::chrono::seconds(2);
  std::chrono::milliseconds betweenLooks = std::chrono::milliseconds(200);
};

class Conversation {
 public:
  // Makes the request on the helper's proxy, giving exactly one of the two replies on.
  using Request = std::function<void(HalvoHelperProtocol& helper, const TextReply& text, const BoolReply& boolean)>;

  // Makes a client of the service, which connects with its first message.
  using Connect = std::function<std::unique_ptr<ServiceClient>()>;

  explicit Conversation(Connect connect, const Pace& pace = {});

  // From here on no reply is waited for longer than this.
  void waitAtMost(std::chrono::milliseconds limit) { limit_ = limit; }

  // Blocks until the helper has answered, without a limit however long that takes. When that is longer than the
  // patience, `whileWaiting` is called again and again on this thread, the last time when the answer is there.
  Outcome ask(
      const Request& request, const std::function<void()>& whileWaiting = [] {});

  // The same for a request that changes nothing: where the connection ends before the reply, the request is made once
  // more on a fresh one. The helper exits when it is idle, and a request that meets the exit is cut off.
  Outcome askRepeatably(const Request& request);

  // Sends a message without reply. Returns when the helper has taken it, or with the failure.
  Outcome tell(const std::function<void(HalvoHelperProtocol& helper)>& message);

 private:
  const Connect connect_;
  std::unique_ptr<ServiceClient> client_;
  const Pace pace_;
  std::optional<std::chrono::milliseconds> limit_;
};

}  // namespace halvo
