#include "sim/machine/HostProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <optional>

#include "sim/support/NamelessFile.h"

namespace halvo::sim {
namespace {

constexpr int kSignalBase = 128;

class Actions {
 public:
  Actions() { ::posix_spawn_file_actions_init(&actions_); }
  Actions(const Actions&) = delete;
  Actions& operator=(const Actions&) = delete;
  ~Actions() { ::posix_spawn_file_actions_destroy(&actions_); }
  posix_spawn_file_actions_t* get() { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_{};
};

std::vector<char*> pointers(std::vector<std::string>& words) {
  std::vector<char*> list;
  for (std::string& word : words) list.push_back(word.data());
  list.push_back(nullptr);
  return list;
}

std::optional<pid_t> spawn(std::vector<std::string> argv, Actions& actions) {
  std::vector<std::string> environment = {"PATH=/usr/bin:/bin:/usr/sbin:/sbin"};
  if (const char* terminal = std::getenv("TERM")) environment.push_back(std::string("TERM=") + terminal);
  ::posix_spawn_file_actions_addclosefrom_np(actions.get(), STDERR_FILENO + 1);
  pid_t child = 0;
  const int error = ::posix_spawnp(&child, argv[0].c_str(), actions.get(), nullptr, pointers(argv).data(),
                                   pointers(environment).data());
  if (error != 0) return std::nullopt;
  return child;
}

int collect(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFSIGNALED(status) ? kSignalBase + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

HostResult runOnHost(const std::vector<std::string>& argv) {
  const UniqueDescriptor out = namelessFile();
  const UniqueDescriptor err = namelessFile();
  Actions actions;
  ::posix_spawn_file_actions_addopen(actions.get(), STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  ::posix_spawn_file_actions_adddup2(actions.get(), out.get(), STDOUT_FILENO);
  ::posix_spawn_file_actions_adddup2(actions.get(), err.get(), STDERR_FILENO);
  const auto child = spawn(argv, actions);
  if (!child) return {.status = kProgramMissing, .out = {}, .err = {}};
  const int status = collect(*child);
  return {.status = status, .out = contentOf(out), .err = contentOf(err)};
}

int runInPlace(const std::vector<std::string>& argv) {
  Actions actions;
  const auto child = spawn(argv, actions);
  return child ? collect(*child) : kProgramMissing;
}

}  // namespace halvo::sim
