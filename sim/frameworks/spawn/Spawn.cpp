// A Mac's posix_spawn on top of the C library's. Built without the simulated headers, since both declare the same
// names for different types; the opaque pointers of the simulated header arrive here as void*.
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>

#include <cerrno>
#include <new>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "sim/frameworks/corefoundation/LivingObjects.h"

using namespace halvo::sim;

namespace {

constexpr unsigned kCloseByDefault = 0x4000;
// These have the same values in both worlds.
constexpr unsigned kSharedFlags = POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK;
static_assert(kSharedFlags == 0x000E);

// What a fresh object holds is the platform's own affair, so it holds nothing that a caller could rest on: every signal
// blocked, none with its default action, and a process group that nobody may join.
struct Attributes {
  Attributes() {
    constexpr pid_t kForeignGroup = 1;
    sigset_t all{};
    sigfillset(&all);
    ::posix_spawnattr_init(&native);
    ::posix_spawnattr_setsigmask(&native, &all);
    ::posix_spawnattr_setpgroup(&native, kForeignGroup);
  }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;
  ~Attributes() { ::posix_spawnattr_destroy(&native); }

  posix_spawnattr_t native{};
  bool closeByDefault = false;
};

struct NativeActions {
  NativeActions() { ::posix_spawn_file_actions_init(&value); }
  NativeActions(const NativeActions&) = delete;
  NativeActions& operator=(const NativeActions&) = delete;
  ~NativeActions() { ::posix_spawn_file_actions_destroy(&value); }

  posix_spawn_file_actions_t value{};
};

// What happens to one of a child's descriptors before its program runs: a file is opened as `to`, or `from` duplicated.
struct FileAction {
  int to;
  int from = -1;
  bool inherits = false;  // stays open, whatever its close-on-exec flag says
  std::optional<std::string> path{};
  int flags = 0;
  mode_t mode = 0;
};
using FileActions = std::vector<FileAction>;

// Duplicating a descriptor onto itself clears its close-on-exec flag here.
int translate(const FileAction& action, posix_spawn_file_actions_t& target) {
  return action.path
             ? ::posix_spawn_file_actions_addopen(&target, action.to, action.path->c_str(), action.flags, action.mode)
             : ::posix_spawn_file_actions_adddup2(&target, action.from, action.to);
}

bool closesOnExec(int descriptor) { return ::fcntl(descriptor, F_GETFD) == FD_CLOEXEC; }

// What the actions leave behind, in the order in which they run.
struct Outcome {
  std::set<int> open;
  // Duplicated onto themselves only: a Mac leaves their close-on-exec flag as it was, the C library clears it.
  std::set<int> lost;

  void add(const FileAction& action) {
    const bool ontoItself = action.from == action.to && !action.inherits;
    if (ontoItself && !open.contains(action.to) && closesOnExec(action.to)) {
      lost.insert(action.to);
    } else {
      open.insert(action.to);
      lost.erase(action.to);
    }
  }
};

int closeAll(const std::set<int>& descriptors, posix_spawn_file_actions_t& target) {
  for (const int descriptor : descriptors) {
    const int error = ::posix_spawn_file_actions_addclose(&target, descriptor);
    if (error != 0) return error;
  }
  return 0;
}

int closeAllBut(const std::set<int>& descriptors, posix_spawn_file_actions_t& target) {
  int next = 0;
  for (const int kept : descriptors) {
    for (; next < kept; ++next) {
      const int error = ::posix_spawn_file_actions_addclose(&target, next);
      if (error != 0) return error;
    }
    next = kept + 1;
  }
  return ::posix_spawn_file_actions_addclosefrom_np(&target, next);
}

// Into the C library's actions; answers an errno value. With `closeRest`, every descriptor that no action leaves open
// is closed at the end.
int translate(const FileActions& actions, posix_spawn_file_actions_t& target, bool closeRest) {
  Outcome outcome;
  for (const FileAction& action : actions) {
    const int error = translate(action, target);
    if (error != 0) return error;
    outcome.add(action);
  }
  return closeRest ? closeAllBut(outcome.open, target) : closeAll(outcome.lost, target);
}

// An interface that answers errno values must not let an exception out.
template <typename T>
int create(void** target) noexcept {
  *target = new (std::nothrow) T;
  if (*target == nullptr) return ENOMEM;
  countCreated();
  return 0;
}

template <typename T>
int destroy(void** target) noexcept {
  if (*target == nullptr) return EINVAL;
  delete static_cast<T*>(*target);
  countDestroyed();
  *target = nullptr;
  return 0;
}

Attributes* attributesOf(void* const* attributes) {
  return attributes == nullptr ? nullptr : static_cast<Attributes*>(*attributes);
}

int add(void** actions, const FileAction& action) noexcept {
  if (actions == nullptr || *actions == nullptr) return EINVAL;
  if (action.to < 0 || (!action.path && action.from < 0)) return EBADF;
  try {
    static_cast<FileActions*>(*actions)->push_back(action);
    return 0;
  } catch (const std::bad_alloc&) {
    return ENOMEM;
  }
}

}  // namespace

// The linker's names of the functions that the simulated <spawn.h> declares.
extern "C" {

int halvo_sim_posix_spawnattr_init(void** attributes) { return create<Attributes>(attributes); }
int halvo_sim_posix_spawnattr_destroy(void** attributes) { return destroy<Attributes>(attributes); }

int halvo_sim_posix_spawnattr_setflags(void** attributes, short flags) {
  Attributes* target = attributesOf(attributes);
  const auto wanted = static_cast<unsigned short>(flags);
  if (target == nullptr || (wanted & ~(kSharedFlags | kCloseByDefault)) != 0) return EINVAL;
  target->closeByDefault = (wanted & kCloseByDefault) != 0;
  return ::posix_spawnattr_setflags(&target->native, static_cast<short>(wanted & kSharedFlags));
}

int halvo_sim_posix_spawnattr_setpgroup(void** attributes, pid_t group) {
  Attributes* target = attributesOf(attributes);
  return target == nullptr ? EINVAL : ::posix_spawnattr_setpgroup(&target->native, group);
}

int halvo_sim_posix_spawnattr_setsigmask(void** attributes, const sigset_t* mask) {
  Attributes* target = attributesOf(attributes);
  return target == nullptr ? EINVAL : ::posix_spawnattr_setsigmask(&target->native, mask);
}

int halvo_sim_posix_spawnattr_setsigdefault(void** attributes, const sigset_t* signals) {
  Attributes* target = attributesOf(attributes);
  return target == nullptr ? EINVAL : ::posix_spawnattr_setsigdefault(&target->native, signals);
}

int halvo_sim_posix_spawn_file_actions_init(void** actions) { return create<FileActions>(actions); }
int halvo_sim_posix_spawn_file_actions_destroy(void** actions) { return destroy<FileActions>(actions); }

int halvo_sim_posix_spawn_file_actions_adddup2(void** actions, int from, int to) {
  return add(actions, {.to = to, .from = from});
}

int halvo_sim_posix_spawn_file_actions_addopen(void** actions, int descriptor, const char* path, int flags,
                                               mode_t mode) {
  return add(actions, {.to = descriptor, .path = path, .flags = flags, .mode = mode});
}

int halvo_sim_posix_spawn_file_actions_addinherit_np(void** actions, int descriptor) {
  return add(actions, {.to = descriptor, .from = descriptor, .inherits = true});
}

int halvo_sim_posix_spawn(pid_t* pid, const char* path, void* const* fileActions, void* const* attributes,
                          char* const argv[], char* const envp[]) {
  const Attributes* wanted = attributesOf(attributes);
  const bool closeByDefault = wanted != nullptr && wanted->closeByDefault;
  const FileActions none;
  const auto* actions = fileActions == nullptr ? nullptr : static_cast<const FileActions*>(*fileActions);
  NativeActions native;
  const int error = translate(actions == nullptr ? none : *actions, native.value, closeByDefault);
  if (error != 0) return error;
  return ::posix_spawn(pid, path, &native.value, wanted == nullptr ? nullptr : &wanted->native, argv, envp);
}

}  // extern "C"
