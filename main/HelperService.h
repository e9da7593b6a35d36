// Admits clients: the delegate of the helper's listener.
#pragma once

#include <functional>
#include <memory>

#include "HalvoHelper/security/ClientValidator.h"
#include "HalvoHelperXPC/HalvoHelperProtocol.h"
#include "transport/ServiceListener.h"

namespace halvo {

class HelperService final : public ServiceListenerDelegate {
 public:
  using HandlerFactory = std::function<std::shared_ptr<HalvoHelperProtocol>()>;

  // `makeHandler` is called once for each admitted connection.
  HelperService(std::shared_ptr<const ClientValidator> validator, HandlerFactory makeHandler);

  // Admits a client whose audit token the validator accepts and gives it a handler of its own. A refused one is
  // logged; its connection is neither configured nor resumed.
  bool shouldAcceptNewConnection(IncomingConnection& connection) override;

 private:
  const std::shared_ptr<const ClientValidator> validator_;
  const HandlerFactory makeHandler_;
};

}  // namespace halvo
