// Limits and use of a process's resources. The largest resident size is in bytes, not kibibytes.
#pragma once

#include <sys/types.h>

typedef uint64_t rlim_t;

struct rlimit {
  rlim_t rlim_cur;
  rlim_t rlim_max;
};

struct rusage {
  struct timeval ru_utime;
  struct timeval ru_stime;
  long ru_maxrss;
  long ru_ixrss;
  long ru_idrss;
  long ru_isrss;
  long ru_minflt;
  long ru_majflt;
  long ru_nswap;
  long ru_inblock;
  long ru_oublock;
  long ru_msgsnd;
  long ru_msgrcv;
  long ru_nsignals;
  long ru_nvcsw;
  long ru_nivcsw;
};

#define RLIMIT_FSIZE 1
#define RLIMIT_NOFILE 8
#define RUSAGE_SELF 0

extern "C" {

int getrlimit(int resource, struct rlimit* limit);
int setrlimit(int resource, const struct rlimit* limit);
int getrusage(int whose, struct rusage* usage);

}  // extern "C"
