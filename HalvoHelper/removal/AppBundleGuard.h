// Decides which path a client may have removed as the product's application bundle. The removal is recursive, runs as
// root and takes its path from the caller, so the path is judged as given and again after links are resolved.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace halvo {

// Whether `path` is absolute, free of "..", named Halvo.app, and holds at least one of the product's executables;
// `markerExists` tells whether a file is there. Looks at no file before the path's text is acceptable.
[[nodiscard]] bool halvoValidateAppBundlePath(const std::string& path,
                                              const std::function<bool(const std::string&)>& markerExists);

// The canonical form of `path` if that, too, is absolute, free of ".." and named Halvo.app; nothing otherwise, or if
// `realpath` gives nothing. A link planted under an acceptable name leads nowhere else this way.
[[nodiscard]] std::optional<std::string> halvoResolvedBundlePathIfSafe(
    const std::string& path, const std::function<std::optional<std::string>(const std::string&)>& realpath);

}  // namespace halvo
