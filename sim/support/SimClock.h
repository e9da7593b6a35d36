// The simulated Mac's clock. Its rate belongs to the machine: the file "clock-rate" in the state folder holds a
// factor, so that a minute of idleness passes in a second. A machine without the file runs in real time.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace halvo::sim {

// How many simulated seconds pass in a real one; read once per process. 1 when the file is absent or unusable.
double clockRate();

// Seconds since boot of the simulated Mac as this process sees it: the real monotonic clock times the rate.
double uptimeSeconds();

// Microseconds of the host's monotonic clock, whatever the rate: the same for every process inside and outside, so that
// what several of them note can be put in one order.
std::int64_t uptimeMicroseconds();

// The real time that passes while `simulated` goes by.
std::chrono::nanoseconds realDuration(std::chrono::nanoseconds simulated);

// The time of day in UTC, which runs in real time whatever the rate, as strftime(3) formats it.
std::string universalTime(const char* format = "%Y-%m-%dT%H:%M:%SZ");

}  // namespace halvo::sim
