// The functions of <signal.h> and the macros that stand in front of them.
#pragma once

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
