// The commands of halvo-sim.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace halvo::sim {

struct CommandStreams {
  std::ostream& out;
  std::ostream& err;
};

// Runs `halvo-sim` with these words. Answers the exit status: 0, the status of a command run in the machine, 64 for
// wrong usage, 1 for what cannot be done; every failure is one sentence on `err` that says what to do.
int halvoSim(const std::vector<std::string>& words, const CommandStreams& streams);

}  // namespace halvo::sim
