// The stand-in for the system's package query tool.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "sim/tools/ToolRun.h"

namespace halvo::sim {

// `--check-signature PATH` prints the signature report that travels in the package, its first line made to fit the name
// of the file, and answers 0 when its status is a good signature, otherwise 1; a package without a report has no
// signature. `--forget ID` removes a receipt, `--pkgs` lists them, of the machine whose file system starts at `root`.
int pkgutilTool(const std::vector<std::string>& arguments, const std::filesystem::path& root,
                const ToolStreams& streams);

}  // namespace halvo::sim
