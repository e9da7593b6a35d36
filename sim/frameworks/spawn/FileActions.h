// What happens to a child's descriptors before its program runs. Knows the C library's own interface only.
#pragma once

#include <spawn.h>
#include <sys/types.h>

#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace halvo::sim {

class FileActions {
 public:
  struct Duplicate {
    int from;
    int to;
  };
  struct Inherit {
    int descriptor;
  };
  struct Close {
    int descriptor;
  };
  struct Open {
    int descriptor;
    std::string path;
    int flags;
    mode_t mode;
  };
  struct ChangeDirectory {
    std::string path;
  };
  using Action = std::variant<Duplicate, Inherit, Close, Open, ChangeDirectory>;

  void add(Action action) { actions_.push_back(std::move(action)); }

  // Translates into the C library's actions; answers an errno value. With `closeRest`, every descriptor that no action
  // leaves open is closed at the end.
  int translate(posix_spawn_file_actions_t& target, bool closeRest) const;

 private:
  std::vector<Action> actions_;
};

}  // namespace halvo::sim
