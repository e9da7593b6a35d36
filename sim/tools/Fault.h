// Failures that a test asks of a stand-in system tool, without the tool having a reason to fail.
#pragma once

#include <optional>
#include <string_view>

namespace halvo::sim {

struct Fault {
  enum class Kind { exit, exitAfterActing, hang };
  Kind kind = Kind::exit;
  int status = 0;  // what the tool answers; has no meaning for a hang
  bool operator==(const Fault&) const = default;
};

// The fault that the file faults/<tool> of the state folder asks for, `tool` being the tool's base name: an exit status
// (the tool does nothing), an exit status and the word "after" (the tool acts, then answers the status), or the word
// "hang". Nothing when the file is absent or blank; any other text is a std::runtime_error, since a test that misspells
// its fault must not pass.
std::optional<Fault> scriptedFault(std::string_view tool);

// Sleeps until a signal ends the process.
[[noreturn]] void hangUntilKilled();

}  // namespace halvo::sim
