// Adds the clock that stands still while the machine sleeps, under its name on a Mac.
#pragma once

#include_next <time.h>

#ifndef CLOCK_UPTIME_RAW
#define CLOCK_UPTIME_RAW CLOCK_MONOTONIC

static inline unsigned long long clock_gettime_nsec_np(clockid_t clock) {
  struct timespec now;
  clock_gettime(clock, &now);
  return (unsigned long long)now.tv_sec * 1000000000ULL + (unsigned long long)now.tv_nsec;
}
#endif
