// A delegate for contract tests: admits or refuses every client, and remembers what it was shown.
#pragma once

#include <mach/message.h>
#include <sys/types.h>

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "transport/IncomingConnection.h"
#include "transport/ServiceListener.h"

namespace halvo {

class AdmittingDelegate final : public ServiceListenerDelegate {
 public:
  using HandlerFactory = std::function<std::shared_ptr<HalvoHelperProtocol>()>;

  struct Visitor {
    audit_token_t token;
    pid_t pid;
  };

  // Refuses when the factory gives nothing.
  explicit AdmittingDelegate(HandlerFactory makeHandler) : makeHandler_(std::move(makeHandler)) {}

  bool shouldAcceptNewConnection(IncomingConnection& connection) override {
    {
      const std::lock_guard lock(mutex_);
      visitors_.push_back({connection.auditTokenValue(), connection.processIdentifier()});
    }
    auto handler = makeHandler_();
    if (!handler) return false;
    connection.exportHandler(std::move(handler));
    connection.resume();
    return true;
  }

  [[nodiscard]] std::vector<Visitor> visitors() const {
    const std::lock_guard lock(mutex_);
    return visitors_;
  }

 private:
  const HandlerFactory makeHandler_;
  mutable std::mutex mutex_;
  std::vector<Visitor> visitors_;  // guarded by mutex_
};

}  // namespace halvo
