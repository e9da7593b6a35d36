#include "platform/ServiceRegistration.h"

#include <fcntl.h>

#include <filesystem>
#include <fstream>
#include <system_error>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/launchd/ControlClient.h"
#include "sim/support/CodeSignature.h"
#include "sim/support/MachinePaths.h"

namespace halvo {
namespace {

constexpr const char* kOwnProgram = "/proc/self/exe";

std::string failure(const std::string& reason) { return "The operation couldn’t be completed. (" + reason + ")"; }

// The property list in the application that this program lies in; nothing where there is none.
std::optional<std::string> ownPropertyList(std::string_view plistName) {
  std::error_code error;
  const auto program = std::filesystem::read_symlink(kOwnProgram, error);
  const auto contents = program.parent_path().parent_path();
  if (contents.filename() != "Contents" || contents.parent_path().extension() != ".app") return std::nullopt;
  const auto plist = contents / "Library/LaunchDaemons" / plistName;
  return std::filesystem::is_regular_file(plist, error) ? std::optional(plist.string()) : std::nullopt;
}

bool isSigned() {
  const UniqueDescriptor program(::open(kOwnProgram, O_RDONLY | O_CLOEXEC));
  return program.valid() && sim::readCodeSignature(program.get()).has_value();
}

}  // namespace

std::optional<std::string> halvoRegisterDaemon(std::string_view plistName) {
  const auto plist = ownPropertyList(plistName);
  if (!plist) return failure("SMAppServiceErrorDomain error 8: job property list not found");
  if (!isSigned()) return failure("SMAppServiceErrorDomain error 3: invalid signature");
  const sim::ControlReply reply = sim::ControlClient().submitService(*plist);
  return reply.status == 0 ? std::nullopt : std::optional(failure(reply.text));
}

std::optional<std::string> halvoUnregisterDaemon(std::string_view plistName) {
  return sim::ControlClient().unregisterService(std::string(plistName));
}

DaemonStatus halvoDaemonStatus(std::string_view plistName) {
  const auto plist = ownPropertyList(plistName);
  if (!plist) return DaemonStatus::notFound;
  const std::string word = sim::ControlClient().registrationOf(*plist).text;
  if (word == "enabled") return DaemonStatus::enabled;
  if (word == "requires-approval") return DaemonStatus::requiresApproval;
  return word == "not-registered" ? DaemonStatus::notRegistered : DaemonStatus::unknown;
}

void halvoOpenLoginItemsSettings() {
  std::ofstream(sim::stateRoot() / "opened-settings", std::ios::app) << "Login Items\n";
}

}  // namespace halvo
