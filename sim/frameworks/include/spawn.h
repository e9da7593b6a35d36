// Starting a program. Attributes and file actions are opaque and only made, changed and destroyed through functions.
// Replaces the C library's header as a whole, since types and flag values differ.
#pragma once

#include <signal.h>
#include <sys/types.h>

typedef void* posix_spawnattr_t;
typedef void* posix_spawn_file_actions_t;

#define POSIX_SPAWN_SETPGROUP 0x0002
#define POSIX_SPAWN_SETSIGDEF 0x0004
#define POSIX_SPAWN_SETSIGMASK 0x0008
#define POSIX_SPAWN_CLOEXEC_DEFAULT 0x4000

// The C library has functions of the same names for its own types: these must not reach them.
#ifdef __APPLE__
#define HALVO_SIM_SYMBOL(name)
#else
#define HALVO_SIM_SYMBOL(name) __asm__("halvo_sim_" #name)
#endif

extern "C" {

// Answers an errno value, 0 when the child runs; errno itself is not set.
int posix_spawn(pid_t* __restrict pid, const char* __restrict path, const posix_spawn_file_actions_t* file_actions,
                const posix_spawnattr_t* __restrict attributes, char* const argv[], char* const envp[])
    HALVO_SIM_SYMBOL(posix_spawn);

int posix_spawnattr_init(posix_spawnattr_t* attributes) HALVO_SIM_SYMBOL(posix_spawnattr_init);
int posix_spawnattr_destroy(posix_spawnattr_t* attributes) HALVO_SIM_SYMBOL(posix_spawnattr_destroy);
int posix_spawnattr_setflags(posix_spawnattr_t* attributes, short flags) HALVO_SIM_SYMBOL(posix_spawnattr_setflags);
int posix_spawnattr_setpgroup(posix_spawnattr_t* attributes, pid_t group) HALVO_SIM_SYMBOL(posix_spawnattr_setpgroup);
int posix_spawnattr_setsigmask(posix_spawnattr_t* __restrict attributes, const sigset_t* __restrict mask)
    HALVO_SIM_SYMBOL(posix_spawnattr_setsigmask);
int posix_spawnattr_setsigdefault(posix_spawnattr_t* __restrict attributes, const sigset_t* __restrict signals)
    HALVO_SIM_SYMBOL(posix_spawnattr_setsigdefault);

// With POSIX_SPAWN_CLOEXEC_DEFAULT only the descriptors that an action names reach the child.
int posix_spawn_file_actions_init(posix_spawn_file_actions_t* actions) HALVO_SIM_SYMBOL(posix_spawn_file_actions_init);
int posix_spawn_file_actions_destroy(posix_spawn_file_actions_t* actions)
    HALVO_SIM_SYMBOL(posix_spawn_file_actions_destroy);
int posix_spawn_file_actions_adddup2(posix_spawn_file_actions_t* actions, int fd, int newfd)
    HALVO_SIM_SYMBOL(posix_spawn_file_actions_adddup2);
int posix_spawn_file_actions_addopen(posix_spawn_file_actions_t* __restrict actions, int fd,
                                     const char* __restrict path, int flags, mode_t mode)
    HALVO_SIM_SYMBOL(posix_spawn_file_actions_addopen);
int posix_spawn_file_actions_addinherit_np(posix_spawn_file_actions_t* actions, int fd)
    HALVO_SIM_SYMBOL(posix_spawn_file_actions_addinherit_np);

}  // extern "C"
