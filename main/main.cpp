// halvo-helper: a root daemon that launchd starts when the Halvo application connects. The order below is the order of
// a start: nothing is opened before the process itself is in order, and nothing is published before the administrator
// right was written and judged.
#include <dispatch/dispatch.h>

#include <memory>
#include <string>
#include <utility>

#include "HalvoHelper/security/RealAdminAuthorizer.h"
#include "HalvoHelper/security/SecCodeClientValidator.h"
#include "HalvoHelper/service/ActivityTracker.h"
#include "HalvoHelper/system/CoreAudioDeviceEnumerator.h"
#include "HalvoHelper/system/InheritedState.h"
#include "HalvoHelper/system/RealIdleSleep.h"
#include "HalvoHelper/system/RealPrivilegedFS.h"
#include "HalvoHelper/system/RealProcessRunner.h"
#include "HalvoHelperXPC/Constants.h"
#include "main/AdminRightSetUp.h"
#include "main/HelperService.h"
#include "main/IdleTimer.h"
#include "main/OperationWiring.h"
#include "main/TeamIdentifier.h"
#include "platform/SystemLog.h"
#include "transport/ServiceListener.h"

namespace halvo {
namespace {

SystemAdapters makeAdapters() {
  const auto runner = std::make_shared<const RealProcessRunner>();
  return {
      .runner = runner,
      .launchctl = Launchctl(runner),
      .fs = std::make_shared<const RealPrivilegedFS>(),
      .audio = AudioActivity(std::make_shared<const CoreAudioDeviceEnumerator>()),
      .installer = Installer(runner),
      .verifier = PkgVerifier(runner),
      .sleep = std::make_shared<const RealIdleSleep>(),
  };
}

// Publishes the service. The listener lives as long as the process.
void startListener(std::shared_ptr<HelperService> service) {
  static const auto listener = ServiceListener::forMachService(std::string(kHalvoHelperMachService));
  listener->setDelegate(std::move(service));
  listener->resume();
  halvoSystemLog("halvo-helper: XPC listener up on " + std::string(kHalvoHelperMachService) + " (v" +
                 std::to_string(kHalvoHelperXPCVersion) + ")");
}

}  // namespace
}  // namespace halvo

int main() {
  using namespace halvo;
  halvoPutInheritedStateInOrder();
  const std::string requirement = halvoClientCodeRequirement(HALVO_TEAM_ID, "com.halvo.app");
  SystemAdapters adapters = makeAdapters();
  const bool adminRightIsSound = halvoSetUpAdminRight();
  const auto authorizer = std::make_shared<const RealAdminAuthorizer>();
  const auto tracker = std::make_shared<ActivityTracker>();
  halvoArmIdleTimer(tracker);

  const auto wiring =
      std::make_shared<const OperationWiring>(std::move(adapters), authorizer, adminRightIsSound, tracker);
  startListener(std::make_shared<HelperService>(std::make_shared<const SecCodeClientValidator>(requirement),
                                                [wiring] { return wiring->makeHandler(); }));
  // May end this thread, and with it everything local here: what serves is held by the listener and the timer.
  dispatch_main();
}
