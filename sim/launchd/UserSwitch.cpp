#include "sim/launchd/UserSwitch.h"

#include <grp.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <fstream>

namespace halvo::sim {

bool userExists(uid_t user) {
  if (::geteuid() == user) return true;
  if (::geteuid() != 0) return false;
  std::ifstream map("/proc/self/uid_map");
  std::uint64_t inside = 0;
  std::uint64_t outside = 0;
  std::uint64_t count = 0;
  while (map >> inside >> outside >> count) {
    if (user >= inside && user - inside < count) return true;
  }
  return false;
}

int becomeUser(uid_t user) {
  if (::geteuid() == user) return 0;
  const gid_t group = user == 0 ? 0 : kStaffGroup;
  if (::setgroups(1, &group) != 0 || ::setresgid(group, group, group) != 0 || ::setresuid(user, user, user) != 0) {
    return errno;
  }
  return 0;
}

}  // namespace halvo::sim
