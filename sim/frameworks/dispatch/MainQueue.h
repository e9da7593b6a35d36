// The main queue: what any thread adds runs one item at a time and in order, each on another worker thread.
#pragma once

#include <pthread.h>

#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <variant>
#include <vector>

#include "sim/frameworks/dispatch/Timer.h"

namespace halvo::sim {

class MainQueue {
 public:
  // Lives as long as the process: a thread may add work while the process exits.
  static MainQueue& instance();

  void add(Callout work);
  void addAt(dispatch_time_t when, Callout work);

  // Changes a timer's state under the queue's lock and wakes the queue, which looks at its timers again.
  template <typename Change>
  void changeTimer(const std::shared_ptr<TimerState>& timer, Change change) {
    const std::lock_guard lock(mutex_);
    change(*timer);
    noticeTimer(timer);
  }

  // Runs what is added, with every signal blocked on this thread.
  [[noreturn]] void runForever();

 private:
  using Item = std::variant<Callout, std::shared_ptr<TimerState>>;

  MainQueue();
  void noticeTimer(const std::shared_ptr<TimerState>& timer);
  void collectDue(dispatch_time_t now);
  dispatch_time_t nextDeadline() const;
  void wait();
  // What is to run for an item taken from the queue; empty for a timer that was cancelled or set anew meanwhile.
  Callout prepare(const Item& item) const;

  // A plain condition variable on the monotonic clock: setting the wall clock must not move a deadline.
  pthread_cond_t changed_{};
  mutable std::mutex mutex_;
  // Everything below is guarded by the mutex.
  std::deque<Item> ready_;
  std::multimap<dispatch_time_t, Callout> delayed_;
  std::vector<std::shared_ptr<TimerState>> timers_;
};

}  // namespace halvo::sim
