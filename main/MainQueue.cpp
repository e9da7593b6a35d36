#include "main/MainQueue.h"

#include <dispatch/dispatch.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <utility>

namespace halvo {
namespace {

using Work = std::function<void()>;

}  // namespace

void halvoRunOnMainQueueAfter(std::chrono::nanoseconds delay, Work work) {
  // The queue takes a plain pointer: this owner keeps the work until it has run.
  auto owner = std::make_unique<Work>(std::move(work));
  dispatch_after_f(dispatch_time(DISPATCH_TIME_NOW, delay.count()), dispatch_get_main_queue(), owner.release(),
                   [](void* context) {
                     const std::unique_ptr<Work> kept(static_cast<Work*>(context));
                     (*kept)();
                   });
}

void halvoRunOnMainQueueEvery(std::chrono::nanoseconds interval, Work work) {
  dispatch_source_t timer = dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, dispatch_get_main_queue());
  dispatch_source_set_timer(timer, dispatch_time(DISPATCH_TIME_NOW, interval.count()),
                            static_cast<std::uint64_t>(interval.count()), 0);
  // The handler gets the context that is set when the handler is. Timer and work live as long as the process.
  dispatch_set_context(timer, std::make_unique<Work>(std::move(work)).release());
  dispatch_source_set_event_handler_f(timer, [](void* context) { (*static_cast<Work*>(context))(); });
  dispatch_activate(timer);
}

// Not std::exit: connection threads are still running, and nothing needs to be torn down.
void halvoEndProcess() { std::_Exit(EXIT_SUCCESS); }

}  // namespace halvo
