#include "sim/frameworks/dispatch/MainQueue.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>
#include <utility>

#include "sim/support/SimClock.h"

namespace halvo::sim {
namespace {

// The moment of the real clock at which the simulated uptime reaches `when`. Setting the wall clock must not move it.
std::chrono::steady_clock::time_point realMoment(dispatch_time_t when) {
  // No machine runs this long; adding it to a clock cannot overflow.
  constexpr std::chrono::nanoseconds kLongestWait = std::chrono::hours(24 * 365 * 100);
  const dispatch_time_t now = uptimeNanoseconds();
  const auto ahead = std::min<dispatch_time_t>(when - std::min(when, now), INT64_MAX);
  return std::chrono::steady_clock::now() + std::min(realDuration(std::chrono::nanoseconds(ahead)), kLongestWait);
}

}  // namespace

dispatch_time_t uptimeNanoseconds() {
  constexpr double kNanosecondsPerSecond = 1e9;
  return static_cast<dispatch_time_t>(uptimeSeconds() * kNanosecondsPerSecond);
}

dispatch_time_t nextGridPoint(dispatch_time_t due, std::uint64_t interval, dispatch_time_t now) {
  if (interval == DISPATCH_TIME_FOREVER || due == DISPATCH_TIME_FOREVER) return DISPATCH_TIME_FOREVER;
  const std::uint64_t passed = now < due ? 0 : (now - due) / interval;
  const std::uint64_t room = DISPATCH_TIME_FOREVER - due;
  return passed >= room / interval ? DISPATCH_TIME_FOREVER : due + (passed + 1) * interval;
}

MainQueue& MainQueue::instance() {
  static MainQueue& queue = *new MainQueue;
  return queue;
}

void MainQueue::add(Callout work) {
  const std::lock_guard lock(mutex_);
  ready_.emplace_back(work);
  changed_.notify_one();
}

void MainQueue::addAt(dispatch_time_t when, Callout work) {
  const std::lock_guard lock(mutex_);
  delayed_.emplace(when, work);
  changed_.notify_one();
}

void MainQueue::add(Timer& timer) {
  const std::lock_guard lock(mutex_);
  std::erase(timers_, &timer);
  timers_.push_back(&timer);
  changed_.notify_one();
}

void MainQueue::collectDue(dispatch_time_t now) {
  while (!delayed_.empty() && delayed_.begin()->first <= now) {
    ready_.emplace_back(delayed_.begin()->second);
    delayed_.erase(delayed_.begin());
  }
  for (Timer* const timer : timers_) {
    if (timer->pending || timer->next > now) continue;
    timer->pending = true;
    ready_.emplace_back(timer);
  }
}

dispatch_time_t MainQueue::nextDeadline() const {
  dispatch_time_t deadline = delayed_.empty() ? DISPATCH_TIME_FOREVER : delayed_.begin()->first;
  for (const Timer* const timer : timers_) deadline = std::min(deadline, timer->next);
  return deadline;
}

void MainQueue::wait(std::unique_lock<std::mutex>& lock) {
  const dispatch_time_t deadline = nextDeadline();
  if (deadline == DISPATCH_TIME_FOREVER) {
    changed_.wait(lock);
  } else {
    changed_.wait_until(lock, realMoment(deadline));
  }
}

Callout MainQueue::prepare(const Item& item) {
  if (const auto* work = std::get_if<Callout>(&item)) return *work;
  Timer& timer = *std::get<Timer*>(item);
  timer.pending = false;
  const dispatch_time_t now = uptimeNanoseconds();
  if (timer.next > now) return {};
  // The next deadline is fixed before the handler runs, so that a slow handler does not move the phase.
  timer.next = nextGridPoint(timer.next, timer.interval, now);
  return timer.handler;
}

void MainQueue::runForever() {
  // Workers take no asynchronous signals, and neither does what an item starts on a thread of its own.
  sigset_t all{};
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, nullptr);
  std::unique_lock lock(mutex_);
  while (true) {
    collectDue(uptimeNanoseconds());
    if (ready_.empty()) {
      wait(lock);
      continue;
    }
    const Item item = std::move(ready_.front());
    ready_.pop_front();
    const Callout callout = prepare(item);
    // Unlocked: the handler may add work, and it may end the process.
    lock.unlock();
    if (callout.function != nullptr) std::thread(callout.function, callout.context).join();
    lock.lock();
  }
}

}  // namespace halvo::sim
