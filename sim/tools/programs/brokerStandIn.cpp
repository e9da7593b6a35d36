// The product's root daemon as far as an installation needs it: it says which version started, and runs until it is
// told to end.
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "sim/support/Files.h"

namespace {

constexpr const char* kLogFolder = "/private/var/run/halvo";

// The version stands behind the last line feed of the program, so that one build of it makes brokers of any version,
// each with bytes of its own.
std::string ownVersion() {
  const std::string bytes = halvo::sim::wholeFile("/proc/self/exe");
  return bytes.substr(bytes.rfind('\n') + 1);
}

}  // namespace

// The argument is the folder of the log, for a run outside of the simulated Mac.
int main(int argc, char** argv) {
  // launchd's request to end is kept until the line is written.
  sigset_t end{};
  sigemptyset(&end);
  sigaddset(&end, SIGTERM);
  sigprocmask(SIG_BLOCK, &end, nullptr);
  const std::string folder = argc > 1 ? argv[1] : kLogFolder;
  std::error_code ignored;
  std::filesystem::create_directories(folder, ignored);
  std::ofstream log(folder + "/broker.log", std::ios::app);
  log << "broker " << ownVersion() << " started pid " << ::getpid() << std::endl;
  if (!log) return 1;
  int received = 0;
  while (sigwait(&end, &received) != 0) {
  }
}
