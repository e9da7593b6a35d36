// Points in time and durations, as the kernel passes them.
#pragma once

#include "darwin/types.h"

struct timespec {
  time_t tv_sec;
  long tv_nsec;
};

struct timeval {
  time_t tv_sec;
  suseconds_t tv_usec;
};
