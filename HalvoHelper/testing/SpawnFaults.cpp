// Leads the calls that start a program through the faults, under the names that the simulated <spawn.h> gives them.
#include <spawn.h>

#include "HalvoHelper/testing/SystemCallFaults.h"

namespace halvo {
namespace {

// Answers an errno value, as all these functions do.
template <typename Function, typename... Arguments>
int callUnlessFaulty(const char* name, Function function, Arguments... arguments) {
  const auto* fault = SystemCallFault::of(name);
  return fault == nullptr ? function(arguments...) : fault->error();
}

}  // namespace
}  // namespace halvo

using halvo::callUnlessFaulty;
using Actions = posix_spawn_file_actions_t;
using Attributes = posix_spawnattr_t;

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the linker gives the names.
extern "C" {

int __real_halvo_sim_posix_spawn(pid_t* child, const char* path, const Actions* actions, const Attributes* attributes,
                                 char* const argv[], char* const envp[]);
int __wrap_halvo_sim_posix_spawn(pid_t* child, const char* path, const Actions* actions, const Attributes* attributes,
                                 char* const argv[], char* const envp[]) {
  return callUnlessFaulty("posix_spawn", __real_halvo_sim_posix_spawn, child, path, actions, attributes, argv, envp);
}

int __real_halvo_sim_posix_spawn_file_actions_adddup2(Actions* actions, int from, int to);
int __wrap_halvo_sim_posix_spawn_file_actions_adddup2(Actions* actions, int from, int to) {
  return callUnlessFaulty("posix_spawn_file_actions_adddup2", __real_halvo_sim_posix_spawn_file_actions_adddup2,
                          actions, from, to);
}

int __real_halvo_sim_posix_spawn_file_actions_addinherit_np(Actions* actions, int descriptor);
int __wrap_halvo_sim_posix_spawn_file_actions_addinherit_np(Actions* actions, int descriptor) {
  return callUnlessFaulty("posix_spawn_file_actions_addinherit_np",
                          __real_halvo_sim_posix_spawn_file_actions_addinherit_np, actions, descriptor);
}

int __real_halvo_sim_posix_spawn_file_actions_addopen(Actions* actions, int descriptor, const char* path, int flags,
                                                      mode_t mode);
int __wrap_halvo_sim_posix_spawn_file_actions_addopen(Actions* actions, int descriptor, const char* path, int flags,
                                                      mode_t mode) {
  return callUnlessFaulty("posix_spawn_file_actions_addopen", __real_halvo_sim_posix_spawn_file_actions_addopen,
                          actions, descriptor, path, flags, mode);
}

int __real_halvo_sim_posix_spawn_file_actions_destroy(Actions* actions);
int __wrap_halvo_sim_posix_spawn_file_actions_destroy(Actions* actions) {
  return callUnlessFaulty("posix_spawn_file_actions_destroy", __real_halvo_sim_posix_spawn_file_actions_destroy,
                          actions);
}

int __real_halvo_sim_posix_spawn_file_actions_init(Actions* actions);
int __wrap_halvo_sim_posix_spawn_file_actions_init(Actions* actions) {
  return callUnlessFaulty("posix_spawn_file_actions_init", __real_halvo_sim_posix_spawn_file_actions_init, actions);
}

int __real_halvo_sim_posix_spawnattr_destroy(Attributes* attributes);
int __wrap_halvo_sim_posix_spawnattr_destroy(Attributes* attributes) {
  return callUnlessFaulty("posix_spawnattr_destroy", __real_halvo_sim_posix_spawnattr_destroy, attributes);
}

int __real_halvo_sim_posix_spawnattr_init(Attributes* attributes);
int __wrap_halvo_sim_posix_spawnattr_init(Attributes* attributes) {
  return callUnlessFaulty("posix_spawnattr_init", __real_halvo_sim_posix_spawnattr_init, attributes);
}

int __real_halvo_sim_posix_spawnattr_setflags(Attributes* attributes, short flags);
int __wrap_halvo_sim_posix_spawnattr_setflags(Attributes* attributes, short flags) {
  return callUnlessFaulty("posix_spawnattr_setflags", __real_halvo_sim_posix_spawnattr_setflags, attributes, flags);
}

int __real_halvo_sim_posix_spawnattr_setpgroup(Attributes* attributes, pid_t group);
int __wrap_halvo_sim_posix_spawnattr_setpgroup(Attributes* attributes, pid_t group) {
  return callUnlessFaulty("posix_spawnattr_setpgroup", __real_halvo_sim_posix_spawnattr_setpgroup, attributes, group);
}

int __real_halvo_sim_posix_spawnattr_setsigdefault(Attributes* attributes, const sigset_t* signals);
int __wrap_halvo_sim_posix_spawnattr_setsigdefault(Attributes* attributes, const sigset_t* signals) {
  return callUnlessFaulty("posix_spawnattr_setsigdefault", __real_halvo_sim_posix_spawnattr_setsigdefault, attributes,
                          signals);
}

int __real_halvo_sim_posix_spawnattr_setsigmask(Attributes* attributes, const sigset_t* mask);
int __wrap_halvo_sim_posix_spawnattr_setsigmask(Attributes* attributes, const sigset_t* mask) {
  return callUnlessFaulty("posix_spawnattr_setsigmask", __real_halvo_sim_posix_spawnattr_setsigmask, attributes, mask);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
