// The stand-in for the directory service's command line.
#pragma once

#include <string>
#include <vector>

#include "sim/tools/ToolRun.h"

namespace halvo::sim {

// `. -list /Users UniqueID` prints the accounts of the file "users" in the state folder, a name and a user id a line.
int dsclTool(const std::vector<std::string>& arguments, const ToolStreams& streams);

}  // namespace halvo::sim
