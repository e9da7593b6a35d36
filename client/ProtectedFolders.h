// Which folders the system keeps from daemons.
#pragma once

#include <string>
#include <string_view>

namespace halvo {

// Whether a root daemon has no leave to read below `realPath`, a path without links: Downloads, Desktop and Documents
// of any home, and other volumes. Letters count as a Mac's file system counts them, without regard to case.
[[nodiscard]] bool isKeptFromDaemons(std::string_view realPath);

// The same for the folder in which a file lies, wherever links on the way lead to. What cannot be looked up counts as
// it is written.
[[nodiscard]] bool liesWhereDaemonsMayNotRead(const std::string& path);

}  // namespace halvo
