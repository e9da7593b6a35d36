// Time as the queues measure it: nanoseconds of simulated uptime.
#pragma once

#include <dispatch/dispatch.h>
#include <time.h>

namespace halvo::sim {

dispatch_time_t uptimeNanoseconds();

// The moment of the real monotonic clock at which the simulated uptime reaches `when`; for waiting.
timespec realMoment(dispatch_time_t when);

}  // namespace halvo::sim
