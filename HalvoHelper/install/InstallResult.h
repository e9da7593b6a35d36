// How an install request ended, and the text that tells the client.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "HalvoHelper/security/PkgTrust.h"

namespace halvo {

// The incoming driver is older than the installed one; nothing was changed.
struct InstallDowngrade {
  std::string installed;
  std::string incoming;
  bool operator==(const InstallDowngrade&) const = default;
};
struct InstallOk {
  std::vector<std::string> changed;  // the names of the parts
  bool operator==(const InstallOk&) const = default;
};
// The install failed and nothing was restored. No sequence answers this today; clients know the code.
struct InstallFailed {
  std::string logPath;
  bool operator==(const InstallFailed&) const = default;
};
// The installer failed and the previous installation was copied back.
struct InstallRolledBack {
  std::string logPath;
  bool operator==(const InstallRolledBack&) const = default;
};
// The package was refused before anything was installed.
struct InstallUntrustedPackage {
  HalvoPkgDistrust reason;
  bool operator==(const InstallUntrustedPackage&) const = default;
};
// Audio is running and the caller did not accept an interruption.
struct InstallAudioActive {
  bool operator==(const InstallAudioActive&) const = default;
};

using InstallResult = std::variant<InstallDowngrade, InstallOk, InstallFailed, InstallRolledBack,
                                   InstallUntrustedPackage, InstallAudioActive>;

// One line of JSON with "code" first and no blanks. Values are inserted as they are, not escaped: a version that holds
// a double quote leaves a text that is no JSON any more.
[[nodiscard]] std::string halvoInstallResultJSON(const InstallResult& result);

}  // namespace halvo
