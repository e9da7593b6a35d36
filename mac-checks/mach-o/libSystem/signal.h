// Signals. A set of them is one 32-bit word and changing it is a macro over a function of the same name:
// "::sigemptyset" is no expression here, and the name is no symbol that a program imports. The handler's name is a
// macro as well.
#pragma once

#include "darwin/time.h"

#define SIGHUP 1
#define SIGINT 2
#define SIGQUIT 3
#define SIGILL 4
#define SIGTRAP 5
#define SIGABRT 6
#define SIGFPE 8
#define SIGKILL 9
#define SIGBUS 10
#define SIGSEGV 11
#define SIGSYS 12
#define SIGPIPE 13
#define SIGALRM 14
#define SIGTERM 15
#define SIGURG 16
#define SIGSTOP 17
#define SIGTSTP 18
#define SIGCONT 19
#define SIGCHLD 20
#define SIGTTIN 21
#define SIGTTOU 22
#define SIGIO 23
#define SIGXCPU 24
#define SIGXFSZ 25
#define SIGVTALRM 26
#define SIGPROF 27
#define SIGWINCH 28
#define SIGINFO 29
#define SIGUSR1 30
#define SIGUSR2 31

#define SIG_DFL ((void (*)(int))0)
#define SIG_IGN ((void (*)(int))1)
#define SIG_ERR ((void (*)(int)) - 1)
#define SIG_BLOCK 1
#define SIG_UNBLOCK 2
#define SIG_SETMASK 3
#define SA_RESTART 0x0002
#define SA_SIGINFO 0x0040

typedef int sig_atomic_t;

union sigval {
  int sival_int;
  void* sival_ptr;
};

typedef struct {
  int si_signo;
  int si_errno;
  int si_code;
  pid_t si_pid;
  uid_t si_uid;
  int si_status;
  void* si_addr;
  union sigval si_value;
  long si_band;
  unsigned long reserved[7];
} siginfo_t;

struct sigaction {
  union {
    void (*plain)(int);
    void (*informed)(int, siginfo_t*, void*);
  } handler;
  sigset_t sa_mask;
  int sa_flags;
};
#define sa_handler handler.plain
#define sa_sigaction handler.informed

#include "darwin/signals.h"
