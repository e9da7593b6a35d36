#include "main/IdleTimer.h"

#include <dispatch/dispatch.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>

#include "platform/SystemLog.h"

namespace halvo {
namespace {

constexpr std::int64_t kCheckSeconds = 15;
constexpr std::uint64_t kCheckNanoseconds = kCheckSeconds * NSEC_PER_SEC;

void exitIfIdle(void* context) {
  const auto& tracker = *static_cast<ActivityTracker*>(context);
  if (!tracker.isIdle(kIdlePeriodSeconds)) return;
  halvoSystemLog("halvo-helper: idle for " + std::to_string(std::lround(kIdlePeriodSeconds)) +
                 " s, exiting (launchd restarts on demand)");
  // Not std::exit: connection threads are still running, and nothing needs to be torn down.
  std::_Exit(EXIT_SUCCESS);
}

}  // namespace

void halvoArmIdleTimer(std::shared_ptr<ActivityTracker> tracker) {
  static const std::shared_ptr<ActivityTracker> kept = std::move(tracker);
  dispatch_source_t timer = dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, dispatch_get_main_queue());
  const dispatch_time_t first =
      dispatch_time(DISPATCH_TIME_NOW, kCheckSeconds * static_cast<std::int64_t>(NSEC_PER_SEC));
  dispatch_source_set_timer(timer, first, kCheckNanoseconds, 0);
  // The handler gets the context that is set when the handler is.
  dispatch_set_context(timer, kept.get());
  dispatch_source_set_event_handler_f(timer, exitIfIdle);
  dispatch_activate(timer);
}

}  // namespace halvo
