// Stands in for the unified log behind <os/log.h>: keeps every entry as a reader without special rights is shown it.
#pragma once

#include <string>
#include <vector>

namespace halvo::sim {

// Oldest first. An argument that its format does not call public is "<private>"; a conversion other than "%s" makes the
// whole entry say so.
std::vector<std::string> unifiedLogEntries();

void clearUnifiedLog();

}  // namespace halvo::sim
