// The product's root daemon as far as an installation needs it: it says which version started, and runs until it is
// told to end.
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "sim/support/Files.h"
#include "sim/tools/programs/Termination.h"

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
  const halvo::sim::Termination termination;
  const std::string folder = argc > 1 ? argv[1] : kLogFolder;
  std::error_code ignored;
  std::filesystem::create_directories(folder, ignored);
  std::ofstream log(folder + "/broker.log", std::ios::app);
  log << "broker " << ownVersion() << " started pid " << ::getpid() << std::endl;
  if (!log) return 1;
  termination.wait();
}
