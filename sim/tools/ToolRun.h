// What is the same for every stand-in system tool: its faults are honoured and its run is recorded.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace halvo::sim {

// Where a tool prints.
struct ToolStreams {
  std::ostream& out;
  std::ostream& err;
};

// Runs a tool by the rules of its scripted fault, records the run under the absolute path `tool`, and answers the exit
// status. A run that hangs is recorded when it begins, with the status -1, because it has no end. A fault file that
// cannot be understood is reported on `streams.err` and answered with 70.
int runTool(std::string_view tool, const std::vector<std::string>& arguments, const ToolStreams& streams,
            const std::function<int()>& act);

}  // namespace halvo::sim
