// The stand-in for the system's package installer.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "sim/tools/ToolRun.h"

namespace halvo::sim {

// `-pkg PATH -target /`: runs the package's preinstall, unpacks its payload below `root`, runs its postinstall, both
// with the package's path, the target, "/" and "/", and keeps a receipt. Answers 0, or 1 when the package cannot be
// read or its preinstall fails (nothing is changed), when its payload is cut short (half of it is on disk), or when its
// postinstall fails (the files stay, without a receipt).
int installerTool(const std::vector<std::string>& arguments, const std::filesystem::path& root,
                  const ToolStreams& streams);

}  // namespace halvo::sim
