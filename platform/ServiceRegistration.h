// The registration that lets launchd start the helper on demand (SMAppService).
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace halvo {

// Takes back the registration of the daemon whose launchd property list in the application bundle is called
// `plistName` (SMAppService daemonServiceWithPlistName:, unregisterAndReturnError:). Nothing on success, else the
// error's description, never empty. Blocks; the system may end the calling process, if it is that daemon, before the
// call returns.
[[nodiscard]] std::optional<std::string> halvoUnregisterDaemon(std::string_view plistName);

}  // namespace halvo
