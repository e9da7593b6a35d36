// How a child ended. The macros read the status through its address: only a variable can be given to them.
#pragma once

#include <signal.h>

#include <sys/types.h>

typedef enum { P_ALL, P_PID, P_PGID } idtype_t;

#define WNOHANG 0x01
#define WEXITED 0x04
#define WNOWAIT 0x20

#define DARWIN_STATUS_BITS(status) (*(int*)&(status))
#define DARWIN_STATUS_STOPPED 0177
#define DARWIN_STATUS_ENDED_BY(status) (DARWIN_STATUS_BITS(status) & 0177)
#define WIFEXITED(status) (DARWIN_STATUS_ENDED_BY(status) == 0)
#define WEXITSTATUS(status) ((DARWIN_STATUS_BITS(status) >> 8) & 0xFF)
#define WIFSIGNALED(status) \
  (DARWIN_STATUS_ENDED_BY(status) != DARWIN_STATUS_STOPPED && DARWIN_STATUS_ENDED_BY(status) != 0)
#define WTERMSIG(status) DARWIN_STATUS_ENDED_BY(status)

extern "C" {

pid_t waitpid(pid_t child, int* status, int options);
int waitid(idtype_t kind, id_t id, siginfo_t* information, int options);

}  // extern "C"
