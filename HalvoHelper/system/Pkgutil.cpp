#include "HalvoHelper/system/Pkgutil.h"

#include <utility>

namespace halvo {

Pkgutil::Pkgutil(std::shared_ptr<const ProcessRunner> runner) : runner_(std::move(runner)) {}

std::int32_t Pkgutil::forget(const std::string& packageIdentifier) const {
  return runner_->run("/usr/sbin/pkgutil", {"--forget", packageIdentifier}).code;
}

}  // namespace halvo
