// Finds the program behind a process number, as the code-signing service does.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <sys/types.h>

#include <cstdint>
#include <optional>

#include "sim/support/CodeSignature.h"

namespace halvo::sim {

// A running program. The kernel's own code is the one without a process.
struct Guest {
  struct Process {
    pid_t pid;
    std::uint32_t version;
  };
  std::optional<Process> process;
  std::optional<CodeSignature> signature;  // nothing when unsigned
  bool intact = true;                      // the file that runs is what was signed
  bool replaced = false;                   // another program lies at its path by now
};

struct GuestLookup {
  OSStatus status;
  Guest guest;  // meaningful when the status is success
};

// Answers a status other than success when there is no such process, when `version` is given and belongs to an earlier
// process of the same number, or when nothing lies at the program's path any more: code is looked up by its path. A
// script counts as its interpreter.
GuestLookup findGuest(pid_t pid, std::optional<std::uint32_t> version);

// False once the process has gone.
bool guestStillRuns(const Guest& guest);

}  // namespace halvo::sim
