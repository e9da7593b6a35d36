// The registration that lets launchd start the helper on demand (SMAppService).
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace halvo {

// A daemon is named by its launchd property list in Contents/Library/LaunchDaemons of the application bundle that the
// calling program lies in.

// How the system regards a daemon.
enum class DaemonStatus {
  notRegistered,
  enabled,           // launchd starts it on demand
  requiresApproval,  // registered, and an administrator has to allow it in System Settings first
  notFound,          // the system knows no such daemon of this application, or the bundle holds none
  unknown,           // the system answered what no documentation names
};

// Each answers nothing on success, else the error's description, never empty. They block.

// Fails also for a daemon that is registered already, and for one that it registers and that waits for approval:
// halvoDaemonStatus() tells these apart.
[[nodiscard]] std::optional<std::string> halvoRegisterDaemon(std::string_view plistName);

// Takes the registration back. The system may end the calling process, if it is that daemon, before the call returns.
[[nodiscard]] std::optional<std::string> halvoUnregisterDaemon(std::string_view plistName);

[[nodiscard]] DaemonStatus halvoDaemonStatus(std::string_view plistName);

// Shows the page of System Settings on which an administrator allows daemons. Does not wait for anybody.
void halvoOpenLoginItemsSettings();

}  // namespace halvo
