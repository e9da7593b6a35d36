// Failures that a test asks of a stand-in system tool, without the tool having a reason to fail.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace halvo::sim {

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
// when there is no such line. A line that cannot be read is a std::runtime_error, since a test that misspells its fault
// must not pass.
std::optional<Fault> scriptedFault(std::string_view tool, const std::vector<std::string>& arguments);

// Sleeps until a signal ends the process.
[[noreturn]] void hangUntilKilled();

}  // namespace halvo::sim
