#include "platform/SystemUptime.h"

#include <time.h>

namespace halvo {

double halvoSystemUptime() { return static_cast<double>(clock_gettime_nsec_np(CLOCK_UPTIME_RAW)) / 1e9; }

}  // namespace halvo
