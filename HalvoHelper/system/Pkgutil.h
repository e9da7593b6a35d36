// Keeps the system's book of installed packages.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "HalvoHelper/system/ProcessRunner.h"

namespace halvo {

class Pkgutil {
 public:
  explicit Pkgutil(std::shared_ptr<const ProcessRunner> runner);

  // Removes the receipt of the package with that identifier and answers the tool's exit status, which is not zero
  // when there is none; -1 if the tool could not be started. Blocks. No installed file is touched.
  std::int32_t forget(const std::string& packageIdentifier) const;

 private:
  std::shared_ptr<const ProcessRunner> runner_;
};

}  // namespace halvo
