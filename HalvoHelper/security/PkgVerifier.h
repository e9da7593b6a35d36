// Has the system's package tool check a package's signature and judges what it reports.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "HalvoHelper/security/PkgTrust.h"
#include "HalvoHelper/system/ProcessRunner.h"

namespace halvo {

class PkgVerifier {
 public:
  explicit PkgVerifier(std::shared_ptr<const ProcessRunner> runner);

  // Blocks while the tool reads the package. Whatever goes wrong is a reason for distrust.
  HalvoPkgTrust verify(const std::string& pkgPath, std::string_view teamID) const;

 private:
  std::shared_ptr<const ProcessRunner> runner_;
};

}  // namespace halvo
