#include <dispatch/dispatch.h>
#include <pthread.h>
#include <unistd.h>

#include <thread>

#include "sim/frameworks/corefoundation/Object.h"
#include "sim/frameworks/dispatch/MainQueue.h"

using namespace halvo::sim;

struct dispatch_source_type_s {};

namespace {

bool mainThreadSleepsInstead = false;

[[noreturn]] void sleepForever(void* /*unused*/ = nullptr) {
  for (;;) ::pause();
}

// What is left of the main thread sleeps, so that the process keeps its first thread and all that is looked up by it.
[[noreturn]] void endMainThread() {
  if (mainThreadSleepsInstead) sleepForever();
  // Called when the unwinding is over.
  static pthread_key_t key{};
  pthread_key_create(&key, sleepForever);
  pthread_setspecific(key, &key);
  pthread_exit(nullptr);
}

Timer& timerOf(dispatch_object_t object) {
  if (object == nullptr) abortWithReason("a dispatch function was given a null object");
  if (object == &_dispatch_main_q) abortWithReason("only timers have a context or wait to be activated here");
  return *static_cast<Timer*>(static_cast<dispatch_source_s*>(object));
}

void requireMainQueue(dispatch_queue_t queue) {
  if (queue != &_dispatch_main_q) abortWithReason("only the main queue exists here");
}

}  // namespace

void halvo::sim::letMainThreadSleepInstead() { mainThreadSleepsInstead = true; }

extern "C" {

struct dispatch_queue_main_s _dispatch_main_q;
const struct dispatch_source_type_s _dispatch_source_type_timer {};

dispatch_time_t dispatch_time(dispatch_time_t when, int64_t delta) {
  if (when == DISPATCH_TIME_FOREVER) return when;
  const dispatch_time_t base = when == DISPATCH_TIME_NOW ? uptimeNanoseconds() : when;
  if (delta >= 0) {
    const auto ahead = static_cast<dispatch_time_t>(delta);
    return ahead > DISPATCH_TIME_FOREVER - base ? DISPATCH_TIME_FOREVER : base + ahead;
  }
  // Negating the smallest number would overflow, subtracting it as an unsigned one does not. Before the clock began is
  // its first moment: 0 would mean now.
  const dispatch_time_t back = dispatch_time_t{0} - static_cast<dispatch_time_t>(delta);
  return back < base ? base - back : 1;
}

void dispatch_after_f(dispatch_time_t when, dispatch_queue_t queue, void* context, dispatch_function_t work) {
  requireMainQueue(queue);
  if (when == DISPATCH_TIME_FOREVER) return;
  if (when <= uptimeNanoseconds()) return MainQueue::instance().add(Callout{work, context});
  MainQueue::instance().addAt(when, {work, context});
}

void dispatch_main(void) {
  if (::gettid() != ::getpid()) abortWithReason("dispatch_main was called on another thread than the main one");
  std::thread([] { MainQueue::instance().runForever(); }).detach();
  endMainThread();
}

dispatch_source_t dispatch_source_create(dispatch_source_type_t type, uintptr_t, uintptr_t, dispatch_queue_t queue) {
  if (type != DISPATCH_SOURCE_TYPE_TIMER) abortWithReason("only timer sources exist here");
  requireMainQueue(queue);
  return new Timer;
}

void dispatch_source_set_timer(dispatch_source_t source, dispatch_time_t start, uint64_t interval, uint64_t) {
  const dispatch_time_t first = start == DISPATCH_TIME_NOW ? uptimeNanoseconds() : start;
  MainQueue::instance().changeTimer(timerOf(source), [&](Timer& timer) {
    timer.next = first;
    timer.interval = interval == 0 ? 1 : interval;
  });
}

void dispatch_source_set_event_handler_f(dispatch_source_t source, dispatch_function_t handler) {
  MainQueue::instance().changeTimer(timerOf(source), [=](Timer& timer) { timer.handler = {handler, timer.context}; });
}

void dispatch_set_context(dispatch_object_t object, void* context) {
  MainQueue::instance().changeTimer(timerOf(object), [=](Timer& timer) { timer.context = context; });
}

void dispatch_activate(dispatch_object_t object) { MainQueue::instance().add(timerOf(object)); }

}  // extern "C"
