#include "sim/tools/InstallScript.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "sim/tools/Unpack.h"

namespace halvo::sim {
namespace {

constexpr int kCouldNotRun = -1;

class SpawnActions {
 public:
  SpawnActions(const std::filesystem::path& folder, const std::filesystem::path& log) {
    posix_spawn_file_actions_init(&actions_);
    posix_spawn_file_actions_addchdir_np(&actions_, folder.c_str());
    posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, log.c_str(), O_WRONLY | O_APPEND | O_CREAT, 0644);
    posix_spawn_file_actions_adddup2(&actions_, STDOUT_FILENO, STDERR_FILENO);
  }
  SpawnActions(const SpawnActions&) = delete;
  SpawnActions& operator=(const SpawnActions&) = delete;
  ~SpawnActions() { posix_spawn_file_actions_destroy(&actions_); }
  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_{};
};

int waitForEnd(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return kCouldNotRun;
  }
  return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
}

int spawnAndWait(const std::filesystem::path& script, std::vector<std::string> words,
                 const std::filesystem::path& log) {
  std::vector<char*> argv;
  words.insert(words.begin(), script);
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  // A script of the system's installer gets the system's environment, not that of whoever asked for the install.
  std::array<char, 40> path{"PATH=/usr/bin:/bin:/usr/sbin:/sbin"};
  std::array<char*, 2> environment = {path.data(), nullptr};
  const SpawnActions actions(script.parent_path(), log);
  pid_t child = 0;
  const int error = ::posix_spawn(&child, script.c_str(), actions.get(), nullptr, argv.data(), environment.data());
  return error == 0 ? waitForEnd(child) : kCouldNotRun;
}

}  // namespace

InstallScripts::InstallScripts(std::string_view archive, const std::filesystem::path& root)
    : root_(std::filesystem::absolute(root)) {
  std::error_code problem;
  std::filesystem::create_directories(root_ / "private/tmp", problem);
  std::string pattern = (root_ / "private/tmp/PKInstallSandbox.XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) return;
  folder_ = pattern;
  complete_ = unpack(archive, folder_).problem.empty();
}

InstallScripts::~InstallScripts() {
  std::error_code ignored;
  if (!folder_.empty()) std::filesystem::remove_all(folder_, ignored);
}

int InstallScripts::run(const std::string& name, const std::vector<std::string>& arguments) const {
  if (!complete_) return kCouldNotRun;
  const std::filesystem::path script = folder_ / name;
  std::error_code problem;
  if (!std::filesystem::exists(script, problem)) return 0;
  const std::filesystem::path log = root_ / "private/var/log/install.log";
  std::filesystem::create_directories(log.parent_path(), problem);
  return spawnAndWait(script, arguments, log);
}

}  // namespace halvo::sim
