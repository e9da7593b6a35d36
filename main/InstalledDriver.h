// Reads which driver version is on the machine.
#pragma once

#include <optional>
#include <string>

namespace halvo {

// "CFBundleVersion" of the installed driver's Info.plist; nothing when no driver is installed, the file cannot be read
// or is no property list, or the value is no text. Blocks for one small file.
[[nodiscard]] std::optional<std::string> halvoInstalledDriverVersion();

// The same for the Info.plist at `infoPlistPath`.
[[nodiscard]] std::optional<std::string> halvoDriverVersionIn(const std::string& infoPlistPath);

}  // namespace halvo
