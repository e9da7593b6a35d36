// How a command inside the simulated machine ended.
#pragma once

#include <string>

namespace halvo::sim {

struct CommandResult {
  int status = 0;   // exit status; 128 + number of the signal that ended it; -1 when the machine stopped first
  std::string out;  // standard output
  std::string err;  // standard error
  bool operator==(const CommandResult&) const = default;
};

}  // namespace halvo::sim
