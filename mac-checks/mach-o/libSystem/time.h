// Clocks and calendars. CLOCK_UPTIME_RAW stands still while the machine sleeps; each clock's name is a macro over an
// enumerator.
#pragma once

#include <sys/types.h>

#define CLOCKS_PER_SEC ((clock_t)1000000)

struct tm {
  int tm_sec;
  int tm_min;
  int tm_hour;
  int tm_mday;
  int tm_mon;
  int tm_year;
  int tm_wday;
  int tm_yday;
  int tm_isdst;
  long tm_gmtoff;
  char* tm_zone;
};

typedef enum {
  _CLOCK_REALTIME = 0,
  _CLOCK_MONOTONIC = 6,
  _CLOCK_UPTIME_RAW = 8,
} clockid_t;
#define CLOCK_REALTIME _CLOCK_REALTIME
#define CLOCK_MONOTONIC _CLOCK_MONOTONIC
#define CLOCK_UPTIME_RAW _CLOCK_UPTIME_RAW

extern "C" {

time_t time(time_t* now);
struct tm* gmtime_r(const time_t* __restrict time, struct tm* __restrict parts);
time_t mktime(struct tm* parts);
size_t strftime(char* __restrict to, size_t size, const char* __restrict format, const struct tm* __restrict parts);

int nanosleep(const struct timespec* duration, struct timespec* rest);
int clock_gettime(clockid_t clock, struct timespec* now) DARWIN_INTRODUCED(10.12);
uint64_t clock_gettime_nsec_np(clockid_t clock) DARWIN_INTRODUCED(10.12);

}  // extern "C"
