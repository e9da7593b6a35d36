// Reads which driver version is on the machine.
#pragma once

#include <optional>
#include <string>

namespace halvo {

inline constexpr const char* kInstalledDriverPlist = "/Library/Audio/Plug-Ins/HAL/Halvo.driver/Contents/Info.plist";

// "CFBundleVersion" of the driver whose Info.plist lies at `infoPlist`; nothing when no driver is installed, the file
// cannot be read, is no regular file, holds more than 16 MiB or no property list, or the value is no text. Follows
// links. Blocks for the reading of one small file.
[[nodiscard]] std::optional<std::string> halvoInstalledDriverVersion(
    const std::string& infoPlist = kInstalledDriverPlist);

}  // namespace halvo
