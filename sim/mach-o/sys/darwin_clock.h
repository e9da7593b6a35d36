// The clock that stands still while the machine sleeps.
#pragma once

#include <time.h>

#define CLOCK_UPTIME_RAW 8

extern "C" uint64_t clock_gettime_nsec_np(clockid_t clock) __attribute__((availability(macos, introduced = 10.12)));
