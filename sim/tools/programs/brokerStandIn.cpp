// The product's root daemon as far as an installation needs it: it says which version started, and runs until it is
// told to end.
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

#include "sim/tools/BrokerVersion.h"
#include "sim/tools/programs/Termination.h"

namespace {

constexpr const char* kLogFolder = "/private/var/run/halvo";

std::string ownVersion() {
  std::ifstream program("/proc/self/exe", std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(program), std::istreambuf_iterator<char>()};
  return halvo::sim::brokerVersion(bytes).value_or("of unknown version");
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
