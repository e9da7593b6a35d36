// Where the product's parts lie on a Mac, what the helper keeps beside them, and the names under which launchd and the
// system's installer know them.
#pragma once

#include <array>

namespace halvo {

inline constexpr const char* kDriverBundlePath = "/Library/Audio/Plug-Ins/HAL/Halvo.driver";
inline constexpr const char* kBrokerPath = "/Library/PrivilegedHelperTools/halvo-broker";
inline constexpr const char* kBrokerPlistPath = "/Library/LaunchDaemons/com.halvo.broker.plist";
inline constexpr const char* kDaemonPlistPath = "/Library/LaunchAgents/com.halvo.daemon.plist";

// What a package brings: the parts that are saved before an install, in this order.
inline constexpr std::array<const char*, 4> kInstalledParts = {kDriverBundlePath, kBrokerPath, kBrokerPlistPath,
                                                               kDaemonPlistPath};

inline constexpr const char* kBrokerLabel = "com.halvo.broker";
inline constexpr const char* kDaemonLabel = "com.halvo.daemon";
inline constexpr const char* kPackageIdentifier = "com.halvo.pkg";

// What the system's installer remembers of the package.
inline constexpr const char* kPackageReceiptPath = "/var/db/receipts/com.halvo.pkg.plist";

inline constexpr const char* kApplicationPath = "/Applications/Halvo.app";

// The folder of the saved parts, with a folder for each install, and that of the package copy, there only meanwhile.
inline constexpr const char* kInstallRollbackRoot = "/var/db/halvo/install-rollback";
inline constexpr const char* kInstallStagingRoot = "/var/db/halvo/install-staging";

inline constexpr const char* kInstallLogPath = "/var/log/halvo-install.log";
inline constexpr const char* kUninstallLogPath = "/var/log/halvo-uninstall.log";

}  // namespace halvo
