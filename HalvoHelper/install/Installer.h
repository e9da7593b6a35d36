// Runs the system installer.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "HalvoHelper/system/ProcessRunner.h"

namespace halvo {

class Installer {
 public:
  explicit Installer(std::shared_ptr<const ProcessRunner> runner);

  // Installs the package onto the running system and answers the installer's exit status, -1 if it could not be
  // started. Blocks until it is done, which may take minutes.
  std::int32_t installPkg(const std::string& pkgPath) const;

 private:
  std::shared_ptr<const ProcessRunner> runner_;
};

}  // namespace halvo
