// A command of the system, as a peer: started, waited for, its output thrown away.
#pragma once

#include "bench/drivers/support/Driver.h"

namespace halvo::bench {

// Runs the command whose path comes first; an exit status other than 0 is a std::runtime_error.
void runCommand(const Words& command);

}  // namespace halvo::bench
