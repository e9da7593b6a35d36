// The first program of the simulated machine.
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string>
#include <system_error>
#include <vector>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/launchd/PrivacyProtection.h"
#include "sim/launchd/Session.h"
#include "sim/support/MachinePaths.h"

namespace {

constexpr int kUsage = 64;

bool opens(const std::string& path) {
  return halvo::UniqueDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC)).valid();
}

// Answers 0 when a machine can run here. Says on standard error what is missing, and answers 1: the process table has
// to be readable, since clients are identified by it, and daemons have to be kept out of users' folders.
int probe() {
  const std::string self = "/proc/" + std::to_string(::getpid());
  if (!opens(self + "/exe") || !opens(self + "/stat")) {
    std::cerr << "/proc does not show the processes of the machine\n";
    return 1;
  }
  if (const int error = halvo::sim::closeFolders({"/private/tmp"})) {
    std::cerr << "no folder can be kept from daemons: " << std::generic_category().message(error) << "\n";
    return 1;
  }
  if (!opens("/dev/null") || !opens("/dev/urandom")) {
    std::cerr << "/dev/null and /dev/urandom cannot be opened\n";
    return 1;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (words == std::vector<std::string>{"--probe"}) return probe();
  if (words.size() < 4 || words[0] != "--session") {
    std::cerr << "Usage: launchd --session ROOT UID COMMAND [ARGUMENT...]\n"
                 "       launchd --probe\n";
    return kUsage;
  }
  halvo::sim::setStateRoot(words[1] + "/sim");
  return halvo::sim::runSession({.root = words[1],
                                 .user = static_cast<uid_t>(std::strtoul(words[2].c_str(), nullptr, 10)),
                                 .command = {words.begin() + 3, words.end()}});
}
