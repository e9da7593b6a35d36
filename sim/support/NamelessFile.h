// Files without a name, as the standard streams of a program: neither side ever waits for the other, and what a program
// leaves running in the background delays nobody.
#pragma once

#include <string>
#include <string_view>

#include "HalvoHelper/system/UniqueDescriptor.h"

namespace halvo::sim {

// Positioned at its start; closed on exec. Not valid when none can be had.
UniqueDescriptor namelessFile(std::string_view content = {});

// All that is in the file, wherever it is positioned.
std::string contentOf(const UniqueDescriptor& file);

}  // namespace halvo::sim
