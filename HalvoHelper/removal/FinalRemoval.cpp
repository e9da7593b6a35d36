#include "HalvoHelper/removal/FinalRemoval.h"

namespace halvo {

void halvoFinalizeRemoval(const std::function<std::optional<std::string>()>& unregister, const Launchctl& launchctl,
                          const std::function<void(const std::string&)>& log, const std::function<void()>& exit) {
  if (const auto failure = unregister()) log("halvo-helper: SMAppService unregister failed: " + *failure);
  log(std::string("halvo-helper: finalized, booting out ") + halvoHelperLaunchdLabel);
  const std::int32_t status = launchctl.bootoutSystem(halvoHelperLaunchdLabel);
  log("halvo-helper: bootout returned " + std::to_string(status) + ", exiting");
  exit();
}

}  // namespace halvo
