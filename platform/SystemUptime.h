// The clock for measuring idleness.
#pragma once

namespace halvo {

// Seconds since boot, not counting time asleep (CLOCK_UPTIME_RAW): no change of the wall clock moves it. Any thread.
double halvoSystemUptime();

}  // namespace halvo
