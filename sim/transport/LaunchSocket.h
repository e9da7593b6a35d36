// The listening socket that launchd passes to the job that publishes a Mach service.
#pragma once

#include <optional>
#include <string>

namespace halvo::sim {

// The listening descriptor that was passed to this process under the service's name; nothing when there is none, for
// example because this process was not started by launchd. The descriptor stays launchd's: it is never closed here, and
// it is not passed on to child processes.
std::optional<int> launchSocketFor(const std::string& machServiceName);

}  // namespace halvo::sim
