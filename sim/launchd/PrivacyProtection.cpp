#include "sim/launchd/PrivacyProtection.h"

#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <string>
#include <system_error>

namespace halvo::sim {
namespace {

constexpr std::array kNames = {"Downloads", "Desktop", "Documents"};

bool hasFullDiskAccess(const std::filesystem::path& program, const std::filesystem::path& list) {
  std::ifstream in(list);
  for (std::string line; std::getline(in, line);) {
    if (line == program) return true;
  }
  return false;
}

using Capabilities = std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3>;

// Modes bind nobody who has root's rights. An overlay looks at what it shows with the rights of whoever mounted it, so
// that it is mounted without those that pass over modes: a folder of mode 000 in it is closed to root, too.
void mountClosedFolderHere() {
  __user_cap_header_struct header{.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
  Capabilities all{};
  if (::syscall(SYS_capget, &header, all.data()) != 0) return;
  Capabilities boundByModes = all;
  boundByModes[0].effective &= ~((1U << CAP_DAC_OVERRIDE) | (1U << CAP_DAC_READ_SEARCH));
  if (::syscall(SYS_capset, &header, boundByModes.data()) != 0) return;
  ::mount("overlay", ".", "overlay", MS_RDONLY, "lowerdir=closed:empty");
  ::syscall(SYS_capset, &header, all.data());
}

bool close(const std::filesystem::path& folder) {
  if (::mount("tmpfs", folder.c_str(), "tmpfs", 0, "mode=755") != 0 || ::chdir(folder.c_str()) != 0) return false;
  if (::mkdir("closed", 0) != 0 || ::mkdir("empty", 0) != 0) return false;
  // On a host without overlays what lies in the folder is missing instead of refused.
  mountClosedFolderHere();
  return true;
}

}  // namespace

std::vector<std::filesystem::path> foldersKeptFrom(const std::filesystem::path& program, const LaunchdPaths& paths) {
  std::vector<std::filesystem::path> folders;
  if (hasFullDiskAccess(program, paths.state / "full-disk-access")) return folders;
  std::error_code error;
  for (const auto& home : std::filesystem::directory_iterator(paths.users, error)) {
    for (const char* name : kNames) {
      // A link would have what it leads to closed.
      const auto folder = home.path() / name;
      if (std::filesystem::symlink_status(folder, error).type() == std::filesystem::file_type::directory) {
        folders.push_back(folder);
      }
    }
  }
  return folders;
}

int closeFolders(const std::vector<std::filesystem::path>& folders) {
  if (folders.empty()) return 0;
  // What is mounted here stays here; what launchd's processes mount later still arrives.
  if (::unshare(CLONE_NEWNS) != 0 || ::mount(nullptr, "/", nullptr, MS_REC | MS_SLAVE, nullptr) != 0) return errno;
  for (const auto& folder : folders) {
    if (!close(folder)) return errno;
  }
  return 0;
}

}  // namespace halvo::sim
