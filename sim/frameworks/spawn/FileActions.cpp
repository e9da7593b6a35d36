#include "sim/frameworks/spawn/FileActions.h"

#include <fcntl.h>

#include <set>

namespace halvo::sim {
namespace {

struct Translator {
  posix_spawn_file_actions_t& target;

  int operator()(const FileActions::Duplicate& action) const {
    return ::posix_spawn_file_actions_adddup2(&target, action.from, action.to);
  }
  // Duplicating a descriptor onto itself clears its close-on-exec flag here.
  int operator()(const FileActions::Inherit& action) const {
    return ::posix_spawn_file_actions_adddup2(&target, action.descriptor, action.descriptor);
  }
  int operator()(const FileActions::Close& action) const {
    return ::posix_spawn_file_actions_addclose(&target, action.descriptor);
  }
  int operator()(const FileActions::Open& action) const {
    return ::posix_spawn_file_actions_addopen(&target, action.descriptor, action.path.c_str(), action.flags,
                                              action.mode);
  }
  int operator()(const FileActions::ChangeDirectory& action) const {
    return ::posix_spawn_file_actions_addchdir_np(&target, action.path.c_str());
  }
};

bool closesOnExec(int descriptor) { return ::fcntl(descriptor, F_GETFD) == FD_CLOEXEC; }

// What the actions leave behind, in the order in which they run.
struct Outcome {
  std::set<int> open;
  // Duplicated onto themselves only: a Mac leaves their close-on-exec flag as it was, the C library clears it.
  std::set<int> lost;

  void operator()(const FileActions::Duplicate& action) {
    if (action.from == action.to && !open.contains(action.to) && closesOnExec(action.to)) {
      lost.insert(action.to);
    } else {
      keep(action.to);
    }
  }
  void operator()(const FileActions::Inherit& action) { keep(action.descriptor); }
  void operator()(const FileActions::Close& action) { open.erase(action.descriptor); }
  void operator()(const FileActions::Open& action) { keep(action.descriptor); }
  void operator()(const FileActions::ChangeDirectory&) const {}

  void keep(int descriptor) {
    open.insert(descriptor);
    lost.erase(descriptor);
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

}  // namespace

int FileActions::translate(posix_spawn_file_actions_t& target, bool closeRest) const {
  const Translator translator{target};
  Outcome outcome;
  for (const Action& action : actions_) {
    const int error = std::visit(translator, action);
    if (error != 0) return error;
    std::visit(outcome, action);
  }
  return closeRest ? closeAllBut(outcome.open, target) : closeAll(outcome.lost, target);
}

}  // namespace halvo::sim
