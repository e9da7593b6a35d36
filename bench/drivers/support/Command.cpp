#include "bench/drivers/support/Command.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace halvo::bench {

void runCommand(const Words& command) {
  std::vector<char*> argv;
  for (const std::string& word : command) argv.push_back(const_cast<char*>(word.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions{};
  ::posix_spawn_file_actions_init(&actions);
  // Not into /dev/null: there grep(1) stops at the first match, since nobody could read how many there are.
  ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/zero", O_WRONLY, 0);
  pid_t child = 0;
  const int error = ::posix_spawn(&child, argv.at(0), &actions, nullptr, argv.data(), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  require(error == 0 && ::waitpid(child, &status, 0) == child && status == 0, command.at(0) + " failed");
}

}  // namespace halvo::bench
