// Where the product's parts lie on a Mac, and the labels under which launchd knows them.
#pragma once

namespace halvo {

inline constexpr const char* kDriverBundlePath = "/Library/Audio/Plug-Ins/HAL/Halvo.driver";
inline constexpr const char* kBrokerPath = "/Library/PrivilegedHelperTools/halvo-broker";
inline constexpr const char* kBrokerPlistPath = "/Library/LaunchDaemons/com.halvo.broker.plist";
inline constexpr const char* kDaemonPlistPath = "/Library/LaunchAgents/com.halvo.daemon.plist";

inline constexpr const char* kBrokerLabel = "com.halvo.broker";
inline constexpr const char* kDaemonLabel = "com.halvo.daemon";

}  // namespace halvo
