// What Linux tells about a process, read from /proc/PID/stat.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>

namespace halvo::sim {

struct ProcessFacts {
  char state = 0;  // 'Z' when it has ended and nobody has collected it yet
  pid_t parent = 0;
  std::uint64_t startTime = 0;
};

// Nothing when there is no such process.
std::optional<ProcessFacts> processFacts(pid_t pid);

// Tells a process from a later one that was given the same number: Linux has no pid version, so the low 32 bits of the
// start time stand in for it.
std::optional<std::uint32_t> processVersion(pid_t pid);

}  // namespace halvo::sim
