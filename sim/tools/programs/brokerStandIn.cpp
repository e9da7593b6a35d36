// The product's root daemon as far as an installation needs it: it says which version started, and runs until it is
// told to end.
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <system_error>

#include "sim/support/WholeFile.h"
#include "sim/tools/programs/Termination.h"

namespace {

constexpr const char* kLogFolder = "/private/var/run/halvo";

// The version stands behind the last line feed of the program, so that one build of it makes brokers of any version,
// each with bytes of its own.
std::string ownVersion() {
  const std::string bytes = halvo::sim::wholeFile("/proc/self/exe");
  return bytes.substr(bytes.rfind('\n') + 1);
}

bool append(const std::string& file, const std::string& line) {
  const int log = ::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
  if (log < 0) return false;
  const bool whole = ::write(log, line.data(), line.size()) == static_cast<ssize_t>(line.size());
  ::close(log);
  return whole;
}

}  // namespace

// The argument is the folder of the log, for a run outside of the simulated Mac.
int main(int argc, char** argv) {
  const halvo::sim::Termination termination;
  const std::string folder = argc > 1 ? argv[1] : kLogFolder;
  std::error_code ignored;
  std::filesystem::create_directories(folder, ignored);
  const std::string line = "broker " + ownVersion() + " started pid " + std::to_string(::getpid()) + "\n";
  if (!append(folder + "/broker.log", line)) return 1;
  termination.wait();
}
