// The helper's last act: it takes itself away.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "HalvoHelper/system/Launchctl.h"

namespace halvo {

// The helper's own job in launchd, and the property list under which it was registered.
inline constexpr const char* halvoHelperLaunchdLabel = "com.halvo.helper";
inline constexpr const char* kHelperPlistName = "com.halvo.helper.plist";

// Unregisters the helper's service, boots its job out and ends the process. `unregister` answers the error's
// description if it failed, which stops nothing. `exit` is called last and does not return in the running helper. As
// the bootout normally makes launchd end this process, what comes after it may never happen.
void halvoFinalizeRemoval(const std::function<std::optional<std::string>()>& unregister, const Launchctl& launchctl,
                          const std::function<void(const std::string&)>& log, const std::function<void()>& exit);

}  // namespace halvo
