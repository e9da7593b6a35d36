#include "HalvoHelper/system/Launchctl.h"

#include <utility>

namespace halvo {
namespace {

std::string guiDomain(std::int64_t uid) { return "gui/" + std::to_string(uid); }

}  // namespace

Launchctl::Launchctl(std::shared_ptr<const ProcessRunner> runner) : runner_(std::move(runner)) {}

std::int32_t Launchctl::bootoutGui(std::int64_t uid, const std::string& label) const {
  return launchctl({"bootout", guiDomain(uid) + "/" + label});
}

std::int32_t Launchctl::bootoutSystem(const std::string& label) const {
  return launchctl({"bootout", "system/" + label});
}

std::int32_t Launchctl::bootstrapSystem(const std::string& plistPath) const {
  return launchctl({"bootstrap", "system", plistPath});
}

std::int32_t Launchctl::bootstrapGui(std::int64_t uid, const std::string& plistPath) const {
  return launchctl({"bootstrap", guiDomain(uid), plistPath});
}

bool Launchctl::guiDomainPresent(std::int64_t uid) const { return launchctl({"print", guiDomain(uid)}) == 0; }

std::int32_t Launchctl::restartCoreaudiod() const { return runner_->run("/usr/bin/killall", {"coreaudiod"}).code; }

std::int32_t Launchctl::launchctl(const std::vector<std::string>& arguments) const {
  return runner_->run("/bin/launchctl", arguments).code;
}

}  // namespace halvo
