#include "sim/frameworks/spawn/FileActions.h"

#include <set>

namespace halvo::sim {
namespace {

struct Translator {
  posix_spawn_file_actions_t& target;

  // Duplicating a descriptor onto itself clears its close-on-exec flag, which is how one is inherited.
  int operator()(const FileActions::Duplicate& action) const {
    return ::posix_spawn_file_actions_adddup2(&target, action.from, action.to);
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

struct OpenDescriptors {
  std::set<int> descriptors;

  void operator()(const FileActions::Duplicate& action) { descriptors.insert(action.to); }
  void operator()(const FileActions::Close& action) { descriptors.erase(action.descriptor); }
  void operator()(const FileActions::Open& action) { descriptors.insert(action.descriptor); }
  void operator()(const FileActions::ChangeDirectory&) const {}
};

}  // namespace

int FileActions::translate(posix_spawn_file_actions_t& target, bool closeRest) const {
  const Translator translator{target};
  for (const Action& action : actions_) {
    const int error = std::visit(translator, action);
    if (error != 0) return error;
  }
  return closeRest ? closeUnnamed(target) : 0;
}

int FileActions::closeUnnamed(posix_spawn_file_actions_t& target) const {
  OpenDescriptors named;
  for (const Action& action : actions_) std::visit(named, action);
  int next = 0;
  for (const int kept : named.descriptors) {
    for (; next < kept; ++next) {
      const int error = ::posix_spawn_file_actions_addclose(&target, next);
      if (error != 0) return error;
    }
    next = kept + 1;
  }
  return ::posix_spawn_file_actions_addclosefrom_np(&target, next);
}

}  // namespace halvo::sim
