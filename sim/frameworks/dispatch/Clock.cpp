#include "sim/frameworks/dispatch/Clock.h"

#include <algorithm>
#include <chrono>

#include "sim/support/SimClock.h"

namespace halvo::sim {
namespace {

constexpr std::int64_t kSecond = NSEC_PER_SEC;
// No machine runs this long; adding it to a clock cannot overflow.
constexpr std::chrono::nanoseconds kLongestWait = std::chrono::hours(24 * 365 * 100);

}  // namespace

dispatch_time_t uptimeNanoseconds() {
  return static_cast<dispatch_time_t>(uptimeSeconds() * static_cast<double>(NSEC_PER_SEC));
}

timespec realMoment(dispatch_time_t when) {
  const dispatch_time_t now = uptimeNanoseconds();
  const auto ahead = std::min<dispatch_time_t>(when - std::min(when, now), INT64_MAX);
  const auto wait = std::min(realDuration(std::chrono::nanoseconds(ahead)), kLongestWait);
  timespec moment{};
  ::clock_gettime(CLOCK_MONOTONIC, &moment);
  const std::int64_t nanoseconds = moment.tv_nsec + wait.count();
  moment.tv_sec += static_cast<time_t>(nanoseconds / kSecond);
  moment.tv_nsec = static_cast<long>(nanoseconds % kSecond);
  return moment;
}

}  // namespace halvo::sim

extern "C" dispatch_time_t dispatch_time(dispatch_time_t when, int64_t delta) {
  if (when == DISPATCH_TIME_FOREVER) return when;
  const dispatch_time_t base = when == DISPATCH_TIME_NOW ? halvo::sim::uptimeNanoseconds() : when;
  if (delta >= 0) {
    const auto ahead = static_cast<dispatch_time_t>(delta);
    return ahead > DISPATCH_TIME_FOREVER - base ? DISPATCH_TIME_FOREVER : base + ahead;
  }
  // Negating the smallest number would overflow, subtracting it as an unsigned one does not. Before the clock began is
  // its first moment: 0 would mean now.
  const dispatch_time_t back = dispatch_time_t{0} - static_cast<dispatch_time_t>(delta);
  return back < base ? base - back : 1;
}
