// Removes the application bundle that a client named, if it is the product's.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "HalvoHelper/system/PrivilegedFS.h"

namespace halvo {

// The canonical path that realpath(3) gives; nothing when the path cannot be resolved.
[[nodiscard]] std::optional<std::string> halvoCanonicalPath(const std::string& path);

// Judges `path` as given and again as `realpath` resolves it, then removes the resolved tree. True when the bundle was
// removed or is gone; false, with a line in `log`, when the path is refused, and false when something stayed. Nothing
// is removed on a refusal. Blocks.
[[nodiscard]] bool halvoRemoveAppBundle(const std::string& path, const PrivilegedFS& fs,
                                        const std::function<std::optional<std::string>(const std::string&)>& realpath,
                                        const std::function<void(std::string_view)>& log);

}  // namespace halvo
