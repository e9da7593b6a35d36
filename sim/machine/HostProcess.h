// Running a program of the host.
#pragma once

#include <string>
#include <vector>

namespace halvo::sim {

struct HostResult {
  int status = 0;  // 128 + signal when one ended it
  std::string out;
  std::string err;
};

// The status when there is no such program.
inline constexpr int kProgramMissing = 127;

// Runs argv[0], found in the usual folders, in the machine's environment (PATH, TERM and nothing else) and without any
// descriptor of this process but 0 to 2.
// Collects what it prints; its standard input is empty.
HostResult runOnHost(const std::vector<std::string>& argv);
// The same with this process's own standard streams; answers the status.
int runInPlace(const std::vector<std::string>& argv);

}  // namespace halvo::sim
