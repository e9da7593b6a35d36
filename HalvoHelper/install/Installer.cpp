#include "HalvoHelper/install/Installer.h"

#include <utility>

namespace halvo {

Installer::Installer(std::shared_ptr<const ProcessRunner> runner) : runner_(std::move(runner)) {}

std::int32_t Installer::installPkg(const std::string& pkgPath) const {
  return runner_->run("/usr/sbin/installer", {"-pkg", pkgPath, "-target", "/"}).code;
}

}  // namespace halvo
