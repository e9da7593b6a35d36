// Counts the calls in flight and remembers when the last one began or ended, so that the helper exits only when it is
// not needed.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

#include "platform/SystemUptime.h"

namespace halvo {

// One more than `count`. Ends the process at the largest number: a count that wrapped to negative would let the helper
// exit under a running install.
[[nodiscard]] std::int64_t halvoCountedUp(std::int64_t count);

// Shared by all connections and the idle timer; any thread.
class ActivityTracker {
 public:
  // `now` gives seconds on a clock that no change of the time of day moves. It is called under the lock.
  explicit ActivityTracker(std::function<double()> now = halvoSystemUptime);
  ActivityTracker(const ActivityTracker&) = delete;
  ActivityTracker& operator=(const ActivityTracker&) = delete;

  void begin();
  void end();

  // Whether no call is in flight and nothing began or ended for at least `period` seconds.
  bool isIdle(double period) const;

 private:
  std::function<double()> now_;
  mutable std::mutex lock_;
  std::int64_t inFlight_ = 0;  // guarded by lock_, never negative
  double lastActivity_;        // guarded by lock_
};

// Counts one call from construction to destruction. Without a tracker it counts nothing.
class ActivityScope {
 public:
  explicit ActivityScope(std::shared_ptr<ActivityTracker> tracker);
  ActivityScope(const ActivityScope&) = delete;
  ActivityScope& operator=(const ActivityScope&) = delete;
  ~ActivityScope();

 private:
  std::shared_ptr<ActivityTracker> tracker_;
};

}  // namespace halvo
