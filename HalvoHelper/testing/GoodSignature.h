// What the report parser makes of the report of a package that is as it should be, and its parts.
#pragma once

#include <string_view>

#include "HalvoHelper/security/PkgSignature.h"

namespace halvo {

inline constexpr std::string_view kTeam = "QX4TRM2ZL9";
inline constexpr const char* kStatus = "signed by a developer certificate issued by Apple for distribution";
inline constexpr const char* kNotary = "trusted by the Apple notary service";
inline constexpr const char* kLeaf = "Developer ID Installer: Halvo Audio (QX4TRM2ZL9)";
inline constexpr const char* kG1 = "7AFC9D01A62F03A2DE9637936D4AFE68090D2DE18D03F29C88CFB0B1BA63587F";
inline constexpr const char* kG2 = "F16CD3C54C7F83CEA4BF1A3E6A0819C8AAA8E4A1528FD144715F350643D2DF3A";
inline constexpr const char* kRoot = "B0B1730ECBC7FF4505142C49F1295E6EDA6BCAED7E2C68C5BE91B5A11001F024";

inline HalvoPkgSignature goodSignature() {
  return {kStatus, kNotary, {{0, kLeaf, "AB"}, {1, "Developer ID CA", kG2}, {2, "Apple Root CA", kRoot}}};
}

}  // namespace halvo
