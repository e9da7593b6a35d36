// What is the same for every stand-in system tool: its scripted faults are honoured and its run is recorded, so that a
// test or a person sees which tools ran and in which order.
#pragma once

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace halvo::sim {

// Where a tool prints.
struct ToolStreams {
  std::ostream& out;
  std::ostream& err;
};

// Runs a tool under its fault, records the run under the absolute path `tool`, and answers the exit status. A run that
// hangs is recorded when it begins, with the status -1, because it has no end. A fault file that cannot be understood
// is reported on `streams.err` and answered with 70: a test that misspells its fault must not pass.
//
// The record is a line of calls.jsonl in the state folder, a JSON object with "time" (UTC), "began" and "ended" (in
// microseconds of the host's monotonic clock), "tool", "arguments" and "status". Lines of tools that end at the same
// moment stay whole. A line that cannot be written is reported on standard error; the tool works on without it.
int runTool(std::string_view tool, const std::vector<std::string>& arguments, const ToolStreams& streams,
            const std::function<int()>& act);

// A failure that a test asks of a tool, without the tool having a reason to fail.
struct Fault {
  enum class Kind { exit, exitAfterActing, hang };
  Kind kind = Kind::exit;
  int status = 0;  // what the tool answers; has no meaning for a hang
  bool operator==(const Fault&) const = default;
};

// The fault that the file faults/<tool> of the state folder has for a run of the tool at the absolute path `tool`: the
// first of its lines that speaks of this run. A line is
//
//     STATUS [after] [on WORD] [call N]     or     hang [on WORD] [call N]
//
// The tool answers the exit status and does nothing, or answers it "after" it has acted, or never ends. "on" chooses
// the runs whose first argument is that word; "call" the N-th of them, or of all, since the machine was made. Nothing
// when there is no such line. A line that cannot be read is a std::runtime_error.
std::optional<Fault> scriptedFault(std::string_view tool, const std::vector<std::string>& arguments);

}  // namespace halvo::sim
