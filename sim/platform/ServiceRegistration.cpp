#include "platform/ServiceRegistration.h"

#include "sim/launchd/ControlClient.h"

namespace halvo {

std::optional<std::string> halvoUnregisterDaemon(std::string_view plistName) {
  auto failure = sim::ControlClient().unregisterService(std::string(plistName));
  if (failure && failure->empty()) return "The operation couldn’t be completed.";
  return failure;
}

}  // namespace halvo
