// Ends the process when nobody has needed it for a while; launchd starts it again with the next connection.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "HalvoHelper/service/ActivityTracker.h"
#include "main/MainQueue.h"

namespace halvo {

// Has `runEvery` look every 15 seconds whether nothing has happened for 60 seconds, and calls `exit` if so. Call once,
// before the main queue runs.
void halvoArmIdleTimer(
    std::shared_ptr<const ActivityTracker> tracker,
    const std::function<void(std::chrono::nanoseconds, std::function<void()>)>& runEvery = halvoRunOnMainQueueEvery,
    std::function<void()> exit = halvoEndProcess);

}  // namespace halvo
