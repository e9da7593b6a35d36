#include "HalvoHelper/removal/AppBundleRemoval.h"

#include <cstdlib>
#include <memory>

#include "HalvoHelper/removal/AppBundleGuard.h"

namespace halvo {
namespace {

struct Freer {
  void operator()(char* text) const { std::free(text); }
};

}  // namespace

std::optional<std::string> halvoCanonicalPath(const std::string& path) {
  const std::unique_ptr<char, Freer> resolved(::realpath(path.c_str(), nullptr));
  return resolved ? std::optional<std::string>(resolved.get()) : std::nullopt;
}

bool halvoRemoveAppBundle(const std::string& path, const PrivilegedFS& fs,
                          const std::function<std::optional<std::string>(const std::string&)>& realpath,
                          const std::function<void(std::string_view)>& log) {
  if (!halvoValidateAppBundlePath(path, [&](const std::string& marker) { return fs.exists(marker); })) {
    log("halvo-helper: refused to remove non-Halvo path " + path);
    return false;
  }
  const auto resolved = halvoResolvedBundlePathIfSafe(path, realpath);
  if (!resolved) {
    log("halvo-helper: refused to remove (failed realpath re-validation) " + path);
    return false;
  }
  return fs.removeTree(*resolved);
}

}  // namespace halvo
