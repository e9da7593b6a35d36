// What a package of the product installs.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sim/tools/Cpio.h"

namespace halvo::sim {

inline constexpr const char* kProductPackageIdentifier = "com.halvo.pkg";

// The driver bundle, the broker and the two property lists with the folders above them, in the order of their
// installation. `brokerProgram` holds the bytes of the broker; every version has files of its own content.
std::vector<CpioEntry> productFiles(const std::string& version, std::string_view brokerProgram);

}  // namespace halvo::sim
