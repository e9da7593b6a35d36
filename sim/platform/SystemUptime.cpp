#include "platform/SystemUptime.h"

#include "sim/support/SimClock.h"

namespace halvo {

double halvoSystemUptime() { return sim::uptimeSeconds(); }

}  // namespace halvo
