// Ends the process when nobody has needed it for a while; launchd starts it again with the next connection.
#pragma once

#include <memory>

#include "HalvoHelper/service/ActivityTracker.h"

namespace halvo {

// The helper exits with status 0 once nothing has happened for this many seconds.
inline constexpr double kIdlePeriodSeconds = 60.0;

// Looks every 15 seconds, on the main queue, whether `tracker` has been idle for the period. Once armed, the timer
// runs until the process ends. Call once, before the main queue runs.
void halvoArmIdleTimer(std::shared_ptr<ActivityTracker> tracker);

}  // namespace halvo
