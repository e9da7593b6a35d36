#include "main/IdleTimer.h"

#include <string>
#include <utility>

#include "platform/SystemLog.h"

namespace halvo {
namespace {

constexpr std::chrono::seconds kIdlePeriod(60);
constexpr std::chrono::seconds kCheckInterval(15);

}  // namespace

void halvoArmIdleTimer(std::shared_ptr<const ActivityTracker> tracker,
                       const std::function<void(std::chrono::nanoseconds, std::function<void()>)>& runEvery,
                       std::function<void()> exit) {
  runEvery(kCheckInterval, [tracker = std::move(tracker), exit = std::move(exit)] {
    if (!tracker->isIdle(static_cast<double>(kIdlePeriod.count()))) return;
    halvoSystemLog("halvo-helper: idle for " + std::to_string(kIdlePeriod.count()) +
                   " s, exiting (launchd restarts on demand)");
    exit();
  });
}

}  // namespace halvo
