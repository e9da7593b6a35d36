// A file system in memory for a test's child process, for what no ordinary disk shows: a full one, or endless files.
#pragma once

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <fstream>
#include <string>

namespace halvo {

// Makes the calling process, which has one thread, the root of a user namespace.
[[nodiscard]] inline bool becomeRootOfItsOwn() {
  const std::string user = "0 " + std::to_string(::geteuid()) + " 1";
  const std::string group = "0 " + std::to_string(::getegid()) + " 1";
  return ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && (std::ofstream("/proc/self/uid_map") << user).flush().good() &&
         (std::ofstream("/proc/self/setgroups") << "deny").flush().good() &&
         (std::ofstream("/proc/self/gid_map") << group).flush().good();
}

// Mounts one on `place`, for the calling process alone: as root where root may, else in a user namespace. False where
// the host allows neither.
[[nodiscard]] inline bool mountMemoryDisk(const std::string& place, const char* size) {
  const bool isApart = ::unshare(CLONE_NEWNS) == 0 || becomeRootOfItsOwn();
  return isApart && ::mount("", "/", "", MS_REC | MS_PRIVATE, nullptr) == 0 &&
         ::mount("none", place.c_str(), "tmpfs", 0, size) == 0;
}

}  // namespace halvo
