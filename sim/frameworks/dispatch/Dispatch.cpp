#include <dispatch/dispatch.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <thread>

#include "sim/frameworks/corefoundation/Object.h"
#include "sim/frameworks/dispatch/Clock.h"
#include "sim/frameworks/dispatch/MainQueue.h"
#include "sim/frameworks/dispatch/MainThread.h"

using namespace halvo::sim;

struct dispatch_source_type_s {};

namespace {

struct Source : dispatch_source_s {
  std::atomic<int> references{1};
  std::atomic<void*> context{nullptr};
  const std::shared_ptr<TimerState> timer = std::make_shared<TimerState>();
};

std::atomic<void*> mainQueueContext{nullptr};

// The main queue is the only object that is not a source.
Source* sourceOf(dispatch_object_t object) {
  if (object == nullptr) abortWithReason("a dispatch function was given a null object");
  return object == &_dispatch_main_q ? nullptr : static_cast<Source*>(static_cast<dispatch_source_s*>(object));
}

void requireMainQueue(dispatch_queue_t queue) {
  if (queue != &_dispatch_main_q) abortWithReason("only the main queue exists here");
}

void cancel(TimerState& timer) { timer.cancelled = true; }

}  // namespace

extern "C" {

struct dispatch_queue_main_s _dispatch_main_q;
const struct dispatch_source_type_s _dispatch_source_type_timer {};

void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t work) {
  requireMainQueue(queue);
  MainQueue::instance().add({work, context});
}

void dispatch_after_f(dispatch_time_t when, dispatch_queue_t queue, void* context, dispatch_function_t work) {
  requireMainQueue(queue);
  if (when == DISPATCH_TIME_FOREVER) return;
  if (when <= uptimeNanoseconds()) return MainQueue::instance().add({work, context});
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
  auto* source = new Source;
  source->timer->source = source;
  return source;
}

void dispatch_source_set_timer(dispatch_source_t source, dispatch_time_t start, uint64_t interval, uint64_t) {
  const dispatch_time_t first = start == DISPATCH_TIME_NOW ? uptimeNanoseconds() : start;
  MainQueue::instance().changeTimer(sourceOf(source)->timer, [&](TimerState& timer) {
    timer.next = first;
    timer.interval = interval == 0 ? 1 : interval;
  });
}

void dispatch_source_set_event_handler_f(dispatch_source_t source, dispatch_function_t handler) {
  void* const context = sourceOf(source)->context;
  MainQueue::instance().changeTimer(sourceOf(source)->timer, [&](TimerState& timer) {
    timer.handler = {handler, context};
  });
}

void dispatch_source_cancel(dispatch_source_t source) {
  MainQueue::instance().changeTimer(sourceOf(source)->timer, cancel);
}

void dispatch_set_context(dispatch_object_t object, void* context) {
  Source* source = sourceOf(object);
  (source == nullptr ? mainQueueContext : source->context) = context;
}

void* dispatch_get_context(dispatch_object_t object) {
  Source* source = sourceOf(object);
  return source == nullptr ? mainQueueContext : source->context;
}

void dispatch_activate(dispatch_object_t object) {
  Source* source = sourceOf(object);
  if (source == nullptr) return;
  MainQueue::instance().changeTimer(source->timer, [](TimerState& timer) { timer.activated = true; });
}

void dispatch_resume(dispatch_object_t object) {
  Source* source = sourceOf(object);
  if (source == nullptr) abortWithReason("dispatch_resume was given an object that is not suspended");
  MainQueue::instance().changeTimer(source->timer, [](TimerState& timer) {
    if (timer.activated) abortWithReason("dispatch_resume was given an object that is not suspended");
    timer.activated = true;
  });
}

void dispatch_retain(dispatch_object_t object) {
  if (Source* source = sourceOf(object)) source->references.fetch_add(1);
}

void dispatch_release(dispatch_object_t object) {
  Source* source = sourceOf(object);
  if (source == nullptr || source->references.fetch_sub(1) != 1) return;
  MainQueue::instance().changeTimer(source->timer, [](TimerState& timer) {
    if (!timer.activated) abortWithReason("dispatch_release was given a source that was never activated");
    cancel(timer);
  });
  delete source;
}

}  // extern "C"
