#include "HalvoHelper/removal/AppBundleGuard.h"

#include <algorithm>
#include <array>

#include "HalvoHelper/system/PathStrings.h"
#include "HalvoHelper/text/Text.h"

namespace halvo {
namespace {

constexpr const char* kBundleName = "Halvo.app";
constexpr std::array<const char*, 3> kMarkers = {
    "Contents/MacOS/halvo-helper",
    "Contents/MacOS/halvo-app",
    "Contents/MacOS/halvo-daemon",
};

// ".." is refused anywhere, also inside a name: telling a harmless one apart is not worth being wrong once.
bool textIsAcceptable(const std::string& path) {
  return path.starts_with('/') && path.find("..") == std::string::npos && !halvoHoldsNul(path) &&
         halvoLastPathComponent(path) == kBundleName;
}

}  // namespace

bool halvoValidateAppBundlePath(const std::string& path, const std::function<bool(const std::string&)>& markerExists) {
  return textIsAcceptable(path) && std::ranges::any_of(kMarkers, [&](const char* marker) {
           return markerExists(halvoAppendingPathComponent(path, marker));
         });
}

std::optional<std::string> halvoResolvedBundlePathIfSafe(
    const std::string& path, const std::function<std::optional<std::string>(const std::string&)>& realpath) {
  auto resolved = realpath(path);
  if (!resolved || !textIsAcceptable(*resolved)) return std::nullopt;
  return resolved;
}

}  // namespace halvo
