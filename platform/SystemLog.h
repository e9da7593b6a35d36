// The system's log, where administrators and support look first.
#pragma once

#include <string_view>

namespace halvo {

// Writes `line`, UTF-8, as one entry at the default level that everybody who may read the log can read, and shows it on
// standard error. The text is data, never a format. An empty line is dropped; of a long one a Mac's log keeps about the
// first KiB. Ill-formed text, and a NUL on a Mac, is shown as well as the platform can. Any thread; failure is silent.
void halvoSystemLog(std::string_view line);

}  // namespace halvo
