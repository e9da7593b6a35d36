#include "sim/launchd/Probe.h"

#include <fcntl.h>
#include <unistd.h>

#include <iostream>
#include <string>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/launchd/UserSwitch.h"

namespace halvo::sim {
namespace {

constexpr uid_t kFirstOrdinaryUser = 501;

bool opens(const std::string& path) { return UniqueDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC)).valid(); }

}  // namespace

int probeMachine() {
  const std::string self = "/proc/" + std::to_string(::getpid());
  if (!opens(self + "/exe") || !opens(self + "/stat")) {
    std::cerr << "/proc does not show the processes of the machine\n";
    return 1;
  }
  if (!opens("/dev/null") || !opens("/dev/urandom")) {
    std::cerr << "/dev/null and /dev/urandom cannot be opened\n";
    return 1;
  }
  std::cout << (userExists(kFirstOrdinaryUser) ? "several" : "one") << "\n";
  return 0;
}

}  // namespace halvo::sim
