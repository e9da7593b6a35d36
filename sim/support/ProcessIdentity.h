// Tells a process from a later one that was given the same number. Linux has no pid version, so the start time of
// the process stands in for it.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>

namespace halvo::sim {

// The low 32 bits of the process's start time (field 22 of /proc/PID/stat); nothing when there is no such process.
std::optional<std::uint32_t> processVersion(pid_t pid);

}  // namespace halvo::sim
