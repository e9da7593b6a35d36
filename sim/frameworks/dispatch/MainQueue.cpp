#include "sim/frameworks/dispatch/MainQueue.h"

#include <algorithm>
#include <csignal>
#include <optional>
#include <thread>
#include <utility>

#include "sim/frameworks/dispatch/Clock.h"

namespace halvo::sim {

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

MainQueue::MainQueue() {
  pthread_condattr_t attributes{};
  pthread_condattr_init(&attributes);
  pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
  pthread_cond_init(&changed_, &attributes);
  pthread_condattr_destroy(&attributes);
}

void MainQueue::add(Callout work) {
  const std::lock_guard lock(mutex_);
  ready_.emplace_back(work);
  pthread_cond_signal(&changed_);
}

void MainQueue::addAt(dispatch_time_t when, Callout work) {
  const std::lock_guard lock(mutex_);
  delayed_.emplace(when, work);
  pthread_cond_signal(&changed_);
}

void MainQueue::noticeTimer(const std::shared_ptr<TimerState>& timer) {
  std::erase(timers_, timer);
  if (timer->activated && !timer->cancelled) timers_.push_back(timer);
  pthread_cond_signal(&changed_);
}

void MainQueue::collectDue(dispatch_time_t now) {
  while (!delayed_.empty() && delayed_.begin()->first <= now) {
    ready_.emplace_back(delayed_.begin()->second);
    delayed_.erase(delayed_.begin());
  }
  for (const auto& timer : timers_) {
    if (timer->pending || timer->next > now) continue;
    timer->pending = true;
    ready_.emplace_back(timer);
  }
}

dispatch_time_t MainQueue::nextDeadline() const {
  dispatch_time_t deadline = delayed_.empty() ? DISPATCH_TIME_FOREVER : delayed_.begin()->first;
  for (const auto& timer : timers_) deadline = std::min(deadline, timer->next);
  return deadline;
}

void MainQueue::wait() {
  const dispatch_time_t deadline = nextDeadline();
  if (deadline == DISPATCH_TIME_FOREVER) {
    pthread_cond_wait(&changed_, mutex_.native_handle());
    return;
  }
  const timespec moment = realMoment(deadline);
  pthread_cond_timedwait(&changed_, mutex_.native_handle(), &moment);
}

Callout MainQueue::prepare(const Item& item) const {
  if (const auto* work = std::get_if<Callout>(&item)) return *work;
  TimerState& timer = *std::get<std::shared_ptr<TimerState>>(item);
  timer.pending = false;
  const dispatch_time_t now = uptimeNanoseconds();
  // Set anew while it waited for its turn, the timer is not due any more.
  if (timer.cancelled || timer.next > now) return {};
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
      wait();
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
