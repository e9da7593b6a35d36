// Signals. A set of them is one 32-bit word and changing it is a macro over a function of the same name:
// "::sigemptyset" is no expression here, and the name is no symbol that a program imports. The handler's name is a
// macro as well.
#pragma once

#include <sys/types.h>

#define SIGHUP 1
#define SIGINT 2
#define SIGILL 4
#define SIGABRT 6
#define SIGFPE 8
#define SIGKILL 9
#define SIGSEGV 11
#define SIGPIPE 13
#define SIGTERM 15
#define SIGSTOP 17
#define SIGCHLD 20
#define SIGXFSZ 25
#define SIGUSR1 30

#define SIG_DFL ((void (*)(int))0)
#define SIG_IGN ((void (*)(int))1)
#define SIG_ERR ((void (*)(int)) - 1)
#define SIG_BLOCK 1
#define SIG_SETMASK 3

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

struct _opaque_pthread_t;

extern "C" {

void (*signal(int number, void (*handler)(int)))(int);
int sigaction(int number, const struct sigaction* __restrict action, struct sigaction* __restrict before);
int raise(int number);
int kill(pid_t process, int number);
int pthread_kill(struct _opaque_pthread_t* thread, int number);
int pthread_sigmask(int how, const sigset_t* set, sigset_t* before);

int sigemptyset(sigset_t* set);
int sigfillset(sigset_t* set);
int sigaddset(sigset_t* set, int number);
int sigdelset(sigset_t* set, int number);
int sigismember(const sigset_t* set, int number);

static inline int darwinSignalBit(int number) { return number > 32 ? 0 : (1 << (number - 1)); }

}  // extern "C"

#define sigemptyset(set) (*(set) = 0, 0)
#define sigfillset(set) (*(set) = ~(sigset_t)0, 0)
#define sigaddset(set, number) (*(set) |= darwinSignalBit(number), 0)
#define sigdelset(set, number) (*(set) &= ~darwinSignalBit(number), 0)
#define sigismember(set, number) ((*(set)&darwinSignalBit(number)) != 0)
