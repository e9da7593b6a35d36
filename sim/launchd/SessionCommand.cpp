#include "sim/launchd/SessionCommand.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <system_error>

#include "sim/launchd/UserSwitch.h"

namespace halvo::sim {
namespace {

constexpr int kCannotRun = 127;

[[noreturn]] void becomeCommand(const std::vector<std::string>& command, uid_t user) {
  std::vector<std::string> environment = userEnvironment(user);
  std::vector<char*> envp;
  for (std::string& entry : environment) envp.push_back(entry.data());
  envp.push_back(nullptr);
  std::vector<std::string> arguments = command;
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);

  int error = becomeUser(user);
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  struct sigaction standard {};
  standard.sa_handler = SIG_DFL;
  for (int number = 1; number < NSIG; ++number) ::sigaction(number, &standard, nullptr);
  sigset_t none{};
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  if (error == 0 && ::chdir("/") != 0) error = errno;
  if (error == 0) {
    ::execvpe(argv[0], argv.data(), envp.data());
    error = errno;
  }
  std::cerr << "Cannot run " << command.front() << " in the machine: " << std::generic_category().message(error)
            << ".\n";
  ::_exit(kCannotRun);
}

}  // namespace

std::optional<pid_t> startSessionCommand(const std::vector<std::string>& command, uid_t user) {
  if (!userExists(user)) {
    std::cerr << "This machine cannot run anything as uid " << user
              << ": it was entered with a single account. Use --user 0, or start it as root.\n";
    return std::nullopt;
  }
  const pid_t child = ::fork();
  if (child < 0) {
    std::cerr << "Cannot start a process: " << std::generic_category().message(errno) << ".\n";
    return std::nullopt;
  }
  if (child == 0) becomeCommand(command, user);
  return child;
}

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

}  // namespace halvo::sim
