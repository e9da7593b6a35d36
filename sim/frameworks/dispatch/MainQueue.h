// The main queue: what any thread adds runs one item at a time and in order, each on another worker thread. Time is
// measured in nanoseconds of simulated uptime.
#pragma once

#include <dispatch/dispatch.h>

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <variant>
#include <vector>

namespace halvo::sim {

struct Callout {
  dispatch_function_t function = nullptr;
  void* context = nullptr;
};

// A repeating timer: the object behind dispatch_source_t. Guarded by the queue's lock, all of it.
struct Timer : dispatch_source_s {
  dispatch_time_t next = DISPATCH_TIME_FOREVER;
  std::uint64_t interval = DISPATCH_TIME_FOREVER;
  Callout handler;
  void* context = nullptr;  // what the next handler gets
  bool pending = false;     // due, and waiting for its turn on the queue
};

class MainQueue {
 public:
  // Lives as long as the process: a thread may add work while the process exits.
  static MainQueue& instance();

  void add(Callout work);
  void addAt(dispatch_time_t when, Callout work);
  // From now on the queue looks at the timer, which has to live as long as the process. Adding it again changes
  // nothing.
  void add(Timer& timer);

  // Changes a timer's state under the queue's lock and wakes the queue.
  template <typename Change>
  void changeTimer(Timer& timer, Change change) {
    const std::lock_guard lock(mutex_);
    change(timer);
    changed_.notify_one();
  }

  // Runs what is added, with every signal blocked on this thread.
  [[noreturn]] void runForever();

 private:
  using Item = std::variant<Callout, Timer*>;

  MainQueue() = default;
  void collectDue(dispatch_time_t now);
  dispatch_time_t nextDeadline() const;
  void wait(std::unique_lock<std::mutex>& lock);
  // What is to run for an item taken from the queue; empty for a timer that was set anew meanwhile.
  static Callout prepare(const Item& item);

  std::condition_variable changed_;
  mutable std::mutex mutex_;
  // Everything below is guarded by the mutex.
  std::deque<Item> ready_;
  std::multimap<dispatch_time_t, Callout> delayed_;
  std::vector<Timer*> timers_;
};

dispatch_time_t uptimeNanoseconds();

// The first point of the timer's grid after `now`: the phase stays, and periods that were missed merge into one run.
dispatch_time_t nextGridPoint(dispatch_time_t due, std::uint64_t interval, dispatch_time_t now);

// dispatch_main ends the main thread as a Mac does: its stack is unwound and its locals are destroyed. In a test
// program, whose framework catches everything on the way, let it sleep instead; before other threads start.
void letMainThreadSleepInstead();

}  // namespace halvo::sim
