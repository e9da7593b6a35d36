// What Linux tells about processes, read from /proc.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <vector>

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

// The numbers of all processes; nothing when they cannot be had.
std::optional<std::vector<pid_t>> processNumbers();

// Kills and collects every child of this process, and what falls to it because their parents ended: this process must
// be the reaper of its descendants. Gives up after a few seconds on what cannot be killed.
void endDescendants();

}  // namespace halvo::sim
