// The stand-ins for the system's tools.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "sim/launchd/ControlClient.h"
#include "sim/tools/ToolRun.h"

namespace halvo::sim {

// Acts as the tool whose path or base name is `name`, under its faults and with its run recorded, and answers its exit
// status. `root` is where the machine's file system starts.
int actAsSystemTool(std::string_view name, const std::vector<std::string>& arguments, std::string_view root,
                    const ToolStreams& streams);

// `-pkg PATH -target /`: runs the package's preinstall, unpacks its payload below `root`, runs its postinstall, both
// with the package's path, the target, "/" and "/", and keeps a receipt. Answers 0, or 1 when the package cannot be
// read or its preinstall fails (nothing is changed), when its payload is cut short (half of it is on disk), or when its
// postinstall fails (the files stay, without a receipt).
int installerTool(const std::vector<std::string>& arguments, const std::filesystem::path& root,
                  const ToolStreams& streams);

// `--check-signature PATH` prints the signature report that travels in the package, its first line made to fit the name
// of the file, and answers 0 when its status is a good signature, otherwise 1; a package without a report has no
// signature. `--forget ID` removes a receipt, `--pkgs` lists them, of the machine whose file system starts at `root`.
int pkgutilTool(const std::vector<std::string>& arguments, const std::filesystem::path& root,
                const ToolStreams& streams);

// `bootstrap DOMAIN PLIST`, `bootout JOB`, `print TARGET`. Answers the exit status, which is launchd's own; 64 for
// wrong usage.
int launchctlTool(const ControlClient& launchd, const std::vector<std::string>& arguments, const ToolStreams& streams);

// `NAME`: 0 when it belonged to a running job, 1 otherwise.
int killallTool(const ControlClient& launchd, const std::vector<std::string>& arguments, const ToolStreams& streams);

}  // namespace halvo::sim
