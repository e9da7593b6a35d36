// The system's log, where administrators and support look first.
#pragma once

#include <string_view>

namespace halvo {

// Writes `line`, UTF-8, as one entry at the default level (NSLog). The text is data, never a format. Any thread;
// ill-formed text is shown as well as the platform can; failure is silent.
void halvoSystemLog(std::string_view line);

}  // namespace halvo
