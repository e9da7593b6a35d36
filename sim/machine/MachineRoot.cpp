#include "sim/machine/MachineRoot.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "sim/launchd/ControlClient.h"
#include "sim/launchd/ProcessStart.h"
#include "sim/launchd/Registrations.h"

namespace halvo::sim {
namespace {

constexpr const char* kApplication = "Applications/Halvo.app";
constexpr const char* kHelperPlist = "/Applications/Halvo.app/Contents/Library/LaunchDaemons/com.halvo.helper.plist";
constexpr unsigned kUsual = 0755;
constexpr unsigned kSharedFolder = 01777;
constexpr unsigned kPrivate = 0700;
constexpr unsigned kEverybodyWrites = 0666;

struct Folder {
  const char* path;
  unsigned mode;
};

constexpr Folder kFolders[] = {
    {"Applications", kUsual},
    {"Library/Application Support", kUsual},
    {"Library/Audio/Plug-Ins/HAL", kUsual},
    {"Library/LaunchAgents", kUsual},
    {"Library/LaunchDaemons", kUsual},
    {"Library/Logs", kUsual},
    {"Library/PrivilegedHelperTools", kUsual},
    {"System/Library/LaunchDaemons", kUsual},
    {"Users/Shared", kSharedFolder},
    {"bin", kUsual},
    {"dev", kUsual},
    {"private/etc", kUsual},
    {"private/tmp", kSharedFolder},
    {"private/var/db/receipts", kUsual},
    {"private/var/empty", kUsual},
    {"private/var/log", kUsual},
    {"private/var/root", kPrivate},
    {"private/var/run/mach", kUsual},
    {"private/var/tmp", kSharedFolder},
    {"proc", kUsual},
    {"sbin", kUsual},
    {"sim/authorization-db", kUsual},
    {"sim/authorization-tokens", kSharedFolder},
    {"sim/faults", kUsual},
    {"sim/job-output", kUsual},
    {"usr/bin", kUsual},
    {"usr/lib", kUsual},
    {"usr/lib64", kUsual},
    {"usr/libexec", kUsual},
    {"usr/sbin", kUsual},
};

struct Link {
  const char* path;
  const char* target;
};

constexpr Link kLinks[] = {
    {"etc", "private/etc"}, {"tmp", "private/tmp"}, {"var", "private/var"}, {"lib", "usr/lib"}, {"lib64", "usr/lib64"},
};

struct UsersFolder {
  const char* path;
  uid_t owner;
  unsigned mode;
};

constexpr UsersFolder kUsersFolders[] = {
    {"Users/user501", 501, kUsual},
    {"Users/user501/Downloads", 501, kUsual},
    {"Users/user502", 502, kUsual},
    {"Users/user502/Downloads", 502, kUsual},
    {"private/var/folders/0/T", 0, kPrivate},
    {"private/var/folders/501/T", 501, kPrivate},
    {"private/var/folders/502/T", 502, kPrivate},
};

// Any account writes to these, and none but root may make files beside them.
constexpr const char* kSharedState[] = {"sim/calls.jsonl", "sim/authorization-prompts", "sim/opened-settings",
                                        "private/var/log/system.log"};

std::optional<MachineProblem> problem(const std::filesystem::path& path, const std::error_code& error) {
  return MachineProblem{path.string() + " cannot be made: " + error.message() + "."};
}

std::optional<MachineProblem> makeFolders(const std::filesystem::path& root) {
  std::error_code error;
  for (const Folder& folder : kFolders) {
    const auto path = root / folder.path;
    std::filesystem::create_directories(path, error);
    if (!error) std::filesystem::permissions(path, std::filesystem::perms(folder.mode), error);
    if (error) return problem(path, error);
  }
  for (const Link& link : kLinks) {
    std::filesystem::create_symlink(link.target, root / link.path, error);
    if (error) return problem(root / link.path, error);
  }
  return std::nullopt;
}

std::optional<MachineProblem> makeUsersFolders(const std::filesystem::path& root) {
  std::error_code error;
  for (const UsersFolder& folder : kUsersFolders) {
    const auto path = root / folder.path;
    std::filesystem::create_directories(path, error);
    if (!error) std::filesystem::permissions(path, std::filesystem::perms(folder.mode), error);
    if (error) return problem(path, error);
    // Without root's rights the machine has one account only, and that one owns everything.
    if (userExists(folder.owner) && ::chown(path.c_str(), folder.owner, kStaffGroup) != 0) {
      return problem(path, std::error_code(errno, std::generic_category()));
    }
  }
  return std::nullopt;
}

std::optional<MachineProblem> makeSharedState(const std::filesystem::path& root) {
  for (const char* name : kSharedState) {
    const auto path = root / name;
    std::error_code error;
    if (!std::ofstream(path)) error = std::make_error_code(std::errc::permission_denied);
    if (!error) std::filesystem::permissions(path, std::filesystem::perms(kEverybodyWrites), error);
    if (error) return problem(path, error);
  }
  return std::nullopt;
}

std::optional<MachineProblem> layInAll(const std::vector<MachineFile>& files, const std::filesystem::path& root) {
  for (const MachineFile& file : files) {
    if (auto problem = layIn(file, root)) return problem;
  }
  return std::nullopt;
}

std::optional<MachineProblem> build(const std::filesystem::path& root) {
  auto files = machineFilesOfThisBuild();
  if (auto* problem = std::get_if<MachineProblem>(&files)) return std::move(*problem);
  // Files get the modes of the list and folders the usual one, whatever the caller's mask is.
  ::umask(S_IWGRP | S_IWOTH);
  if (auto problem = makeFolders(root)) return problem;
  if (auto problem = makeUsersFolders(root)) return problem;
  if (auto problem = makeSharedState(root)) return problem;
  return layInAll(std::get<std::vector<MachineFile>>(files), root);
}

bool inApplication(const MachineFile& file) { return file.destination.string().starts_with(kApplication); }

std::optional<MachineProblem> registerHelper(const std::filesystem::path& root) {
  const ControlReply reply = ControlClient(root / "sim/launchd.sock").registerService(kHelperPlist);
  if (reply.status == 0) return std::nullopt;
  if (reply.status != kLaunchdUnreachable) return MachineProblem{"The helper cannot be registered: " + reply.text};
  if (Registrations(root / "sim/registered-services").add(kHelperPlist)) return std::nullopt;
  return MachineProblem{(root / "sim/registered-services").string() + " cannot be written."};
}

}  // namespace

std::optional<MachineProblem> buildMachine(const std::filesystem::path& root) {
  std::error_code error;
  const bool existed = std::filesystem::exists(root, error);
  if (existed && !std::filesystem::is_empty(root, error)) {
    return MachineProblem{root.string() + " is not an empty folder; name one that does not exist yet."};
  }
  auto problem = build(root);
  if (problem && existed) {
    for (const auto& entry : std::filesystem::directory_iterator(root, error)) {
      std::filesystem::remove_all(entry.path(), error);
    }
  } else if (problem) {
    std::filesystem::remove_all(root, error);
  }
  return problem;
}

std::optional<MachineProblem> putApplicationBack(const std::filesystem::path& root) {
  auto files = machineFilesOfThisBuild();
  if (auto* problem = std::get_if<MachineProblem>(&files)) return std::move(*problem);
  auto& list = std::get<std::vector<MachineFile>>(files);
  std::erase_if(list, [](const MachineFile& file) { return !inApplication(file); });
  if (auto problem = layInAll(list, root)) return problem;
  return registerHelper(root);
}

bool isMachine(const std::filesystem::path& root) {
  std::error_code error;
  return std::filesystem::is_directory(root / "sim", error) && std::filesystem::exists(root / "sbin/launchd", error);
}

}  // namespace halvo::sim
