#include "sim/launchd/SessionCommand.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "sim/launchd/FreshProgram.h"
#include "sim/launchd/UserSwitch.h"

namespace halvo::sim {
namespace {

constexpr int kCannotRun = 127;

// The environment of a program that `user` runs.
std::vector<std::string> userEnvironment(uid_t user) {
  std::vector<std::string> environment = {"PATH=/usr/bin:/bin:/usr/sbin:/sbin", "SHELL=/bin/sh"};
  if (const passwd* account = ::getpwuid(user)) {
    environment.push_back(std::string("HOME=") + account->pw_dir);
    environment.push_back(std::string("USER=") + account->pw_name);
    environment.push_back(std::string("LOGNAME=") + account->pw_name);
  }
  if (const char* terminal = std::getenv("TERM")) environment.push_back(std::string("TERM=") + terminal);
  return environment;
}

void say(int descriptor, const std::string& text) {
  const std::string line = text + "\n";
  [[maybe_unused]] const ssize_t written = ::write(descriptor, line.data(), line.size());
}

// Only in the child.
[[noreturn]] void becomeCommand(const std::vector<std::string>& command, uid_t user, const CommandStreams& streams) {
  if (streams.in != STDIN_FILENO) {
    ::setpgid(0, 0);
    ::dup2(streams.in, STDIN_FILENO);
    ::dup2(streams.out, STDOUT_FILENO);
    ::dup2(streams.err, STDERR_FILENO);
  }
  const std::vector<std::string> environment = userEnvironment(user);
  int error = becomeUser(user);
  if (error == 0 && ::chdir("/") != 0) error = errno;
  if (error == 0) error = becomeFreshProgram(command.front(), command, environment);
  say(STDERR_FILENO,
      "Cannot run " + command.front() + " in the machine: " + std::generic_category().message(error) + ".");
  ::_exit(kCannotRun);
}

}  // namespace

std::optional<pid_t> startSessionCommand(const std::vector<std::string>& command, uid_t user,
                                         const CommandStreams& streams) {
  if (!userExists(user)) {
    say(streams.err, "This machine cannot run anything as uid " + std::to_string(user) +
                         ": it was entered with a single account. Use --user 0, or start it as root.");
    return std::nullopt;
  }
  const pid_t child = ::fork();
  if (child < 0) {
    say(streams.err, "Cannot start a process: " + std::generic_category().message(errno) + ".");
    return std::nullopt;
  }
  if (child == 0) becomeCommand(command, user, streams);
  return child;
}

}  // namespace halvo::sim
