// The stand-in system tools by their names.
#pragma once

#include <string_view>

#include "sim/tools/ToolRun.h"

namespace halvo::sim {

// Acts as the tool whose path or base name is `name`, under its faults and with its run recorded, and answers its exit
// status. `root` is where the machine's file system starts.
int actAsSystemTool(std::string_view name, const std::vector<std::string>& arguments, std::string_view root,
                    const ToolStreams& streams);

}  // namespace halvo::sim
