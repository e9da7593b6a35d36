#include "HalvoHelper/service/ActivityTracker.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

namespace halvo {

std::int64_t halvoCountedUp(std::int64_t count) {
  if (count == std::numeric_limits<std::int64_t>::max()) std::abort();
  return count + 1;
}

ActivityTracker::ActivityTracker(std::function<double()> now) : now_(std::move(now)), lastActivity_(now_()) {}

void ActivityTracker::begin() {
  const std::scoped_lock guard(lock_);
  inFlight_ = halvoCountedUp(inFlight_);
  lastActivity_ = now_();
}

void ActivityTracker::end() {
  const std::scoped_lock guard(lock_);
  inFlight_ = std::max<std::int64_t>(inFlight_ - 1, 0);
  lastActivity_ = now_();
}

bool ActivityTracker::isIdle(double period) const {
  const std::scoped_lock guard(lock_);
  return inFlight_ == 0 && period <= now_() - lastActivity_;
}

ActivityScope::ActivityScope(std::shared_ptr<ActivityTracker> tracker) : tracker_(std::move(tracker)) {
  if (tracker_) tracker_->begin();
}

ActivityScope::~ActivityScope() {
  if (tracker_) tracker_->end();
}

}  // namespace halvo
