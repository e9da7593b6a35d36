// Work for the main queue, which dispatch_main() runs, and the end of the process.
#pragma once

#include <chrono>
#include <functional>

namespace halvo {

// Has the main queue run `work` once, when `delay` has passed. Returns at once; any thread.
void halvoRunOnMainQueueAfter(std::chrono::nanoseconds delay, std::function<void()> work);

// Has the main queue run `work` whenever another `interval` has passed, for as long as the process lives.
void halvoRunOnMainQueueEvery(std::chrono::nanoseconds interval, std::function<void()> work);

// Ends the process with status 0, whatever its other threads are doing.
[[noreturn]] void halvoEndProcess();

}  // namespace halvo
