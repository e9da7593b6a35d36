#include "main/HelperService.h"

#include <string>
#include <utility>

#include "platform/SystemLog.h"
#include "transport/IncomingConnection.h"

namespace halvo {

HelperService::HelperService(std::shared_ptr<const ClientValidator> validator, HandlerFactory makeHandler)
    : validator_(std::move(validator)), makeHandler_(std::move(makeHandler)) {}

bool HelperService::shouldAcceptNewConnection(IncomingConnection& connection) {
  // Read here and nowhere else: in a later message the platform may answer with the token of another sender.
  const audit_token_t token = connection.auditTokenValue();
  if (!validator_->isAuthorized(token)) {
    halvoSystemLog("halvo-helper: rejected unauthorized client pid=" + std::to_string(connection.processIdentifier()));
    return false;
  }
  connection.exportHandler(makeHandler_());
  connection.resume();
  return true;
}

}  // namespace halvo
