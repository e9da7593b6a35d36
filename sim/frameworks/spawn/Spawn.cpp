// A Mac's posix_spawn on top of the C library's. Built without the simulated headers, since both declare the same
// names for different types; the opaque pointers of the simulated header arrive here as void*.
#include <signal.h>
#include <spawn.h>

#include <cerrno>
#include <new>
#include <utility>

#include "sim/frameworks/corefoundation/LivingObjects.h"
#include "sim/frameworks/spawn/FileActions.h"

using namespace halvo::sim;

namespace {

constexpr unsigned kSetSession = 0x0400;
constexpr unsigned kCloseByDefault = 0x4000;
// These four have the same values in both worlds.
constexpr unsigned kSharedFlags =
    POSIX_SPAWN_RESETIDS | POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK;
static_assert(kSharedFlags == 0x000F);

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

int add(void** actions, FileActions::Action action, int descriptor = 0) noexcept {
  if (actions == nullptr || *actions == nullptr) return EINVAL;
  if (descriptor < 0) return EBADF;
  try {
    static_cast<FileActions*>(*actions)->add(std::move(action));
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
  if (target == nullptr || (wanted & ~(kSharedFlags | kSetSession | kCloseByDefault)) != 0) return EINVAL;
  unsigned native = wanted & kSharedFlags;
  if ((wanted & kSetSession) != 0) native |= POSIX_SPAWN_SETSID;
  target->closeByDefault = (wanted & kCloseByDefault) != 0;
  return ::posix_spawnattr_setflags(&target->native, static_cast<short>(native));
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
  return add(actions, FileActions::Duplicate{from, to}, from < 0 ? from : to);
}

int halvo_sim_posix_spawn_file_actions_addclose(void** actions, int descriptor) {
  return add(actions, FileActions::Close{descriptor}, descriptor);
}

int halvo_sim_posix_spawn_file_actions_addopen(void** actions, int descriptor, const char* path, int flags,
                                               mode_t mode) {
  return add(actions, FileActions::Open{descriptor, path, flags, mode}, descriptor);
}

int halvo_sim_posix_spawn_file_actions_addinherit_np(void** actions, int descriptor) {
  return add(actions, FileActions::Inherit{descriptor}, descriptor);
}

int halvo_sim_posix_spawn_file_actions_addchdir_np(void** actions, const char* path) {
  return add(actions, FileActions::ChangeDirectory{path});
}

int halvo_sim_posix_spawn(pid_t* pid, const char* path, void* const* fileActions, void* const* attributes,
                          char* const argv[], char* const envp[]) {
  const Attributes* wanted = attributesOf(attributes);
  const bool closeByDefault = wanted != nullptr && wanted->closeByDefault;
  const FileActions none;
  const auto* actions = fileActions == nullptr ? nullptr : static_cast<const FileActions*>(*fileActions);
  NativeActions native;
  const int error = (actions == nullptr ? none : *actions).translate(native.value, closeByDefault);
  if (error != 0) return error;
  return ::posix_spawn(pid, path, &native.value, wanted == nullptr ? nullptr : &wanted->native, argv, envp);
}

}  // extern "C"
