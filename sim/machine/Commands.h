// The commands of halvo-sim.
#pragma once

#include <string>
#include <vector>

#include "sim/tools/ToolRun.h"

namespace halvo::sim {

// Runs `halvo-sim` with these words. Answers the exit status: 0, the status of a command run in the machine, 64 for
// wrong usage, 1 for what cannot be done; every failure is one sentence on `err` that says what to do.
int halvoSim(const std::vector<std::string>& words, const ToolStreams& streams);

}  // namespace halvo::sim
