#include "sim/launchd/ProcessStart.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <system_error>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/launchd/PrivacyProtection.h"

namespace halvo::sim {
namespace {

// Between fork and exec: default signal dispositions, an empty signal mask, and an end with the parent. `program`
// without a slash is looked for in PATH. Answers the error when it cannot be run.
int becomeFreshProgram(const std::string& program, std::vector<std::string> arguments,
                       std::vector<std::string> environment) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  struct sigaction standard {};
  standard.sa_handler = SIG_DFL;
  for (int number = 1; number < NSIG; ++number) ::sigaction(number, &standard, nullptr);
  sigset_t none{};
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  ::execvpe(program.c_str(), argumentPointers(arguments).data(), argumentPointers(environment).data());
  return errno;
}

// For good; an errno value, 0 on success. Nothing happens when this process runs as `user` already.
int becomeUser(uid_t user) {
  if (::geteuid() == user) return 0;
  const gid_t group = user == 0 ? 0 : kStaffGroup;
  if (::setgroups(1, &group) != 0 || ::setresgid(group, group, group) != 0 || ::setresuid(user, user, user) != 0) {
    return errno;
  }
  return 0;
}

constexpr int kFirstPassed = 3;
// Above every number that a passed socket can get, so that moving one never overwrites another.
constexpr int kParkingSpace = 64;

std::string joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ":") + name;
  return text;
}

// Leaves 0 to 2, the sockets from 3 on, and `report` behind them, which closes when the program takes over.
bool arrangeDescriptors(const JobProcessOrder& order, int& report) {
  const int null = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  const int output = ::open(order.output.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  const int parkedNull = ::fcntl(null, F_DUPFD_CLOEXEC, kParkingSpace);
  const int parkedOutput = ::fcntl(output < 0 ? null : output, F_DUPFD_CLOEXEC, kParkingSpace);
  const int parkedReport = ::fcntl(report, F_DUPFD_CLOEXEC, kParkingSpace);
  std::vector<int> parked;
  for (const int socket : order.listening) parked.push_back(::fcntl(socket, F_DUPFD_CLOEXEC, kParkingSpace));

  bool done = ::dup2(parkedNull, STDIN_FILENO) >= 0 && ::dup2(parkedOutput, STDOUT_FILENO) >= 0 &&
              ::dup2(parkedOutput, STDERR_FILENO) >= 0;
  int next = kFirstPassed;
  for (const int socket : parked) done = ::dup2(socket, next++) >= 0 && done;
  report = ::dup3(parkedReport, next, O_CLOEXEC);
  ::close_range(static_cast<unsigned>(next) + 1, ~0U, 0);
  return done && report >= 0;
}

// Only in the child.
[[noreturn]] void becomeProgram(const JobProcessOrder& order, int report) {
  int error = arrangeDescriptors(order, report) ? 0 : errno;
  ::setpgid(0, 0);
  ::umask(S_IWGRP | S_IWOTH);
  if (error == 0) error = closeFolders(order.closedFolders);
  if (error == 0 && ::chdir("/") != 0) error = errno;
  if (error == 0 && userExists(order.user)) error = becomeUser(order.user);
  std::vector<std::string> environment = {"PATH=/usr/bin:/bin:/usr/sbin:/sbin", "XPC_SERVICE_NAME=" + order.label};
  if (!order.listening.empty()) {
    environment.push_back("LISTEN_FDS=" + std::to_string(order.listening.size()));
    environment.push_back("LISTEN_PID=" + std::to_string(::getpid()));
    environment.push_back("LISTEN_FDNAMES=" + joined(order.listeningNames));
  }
  if (error == 0) error = becomeFreshProgram(order.program, order.arguments, environment);
  [[maybe_unused]] const ssize_t written = ::write(report, &error, sizeof error);
  ::_exit(kProgramMissing);
}

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
[[noreturn]] void becomeCommand(const std::vector<std::string>& command, uid_t user, const ChildStreams& streams) {
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
  ::_exit(kProgramMissing);
}

}  // namespace

bool userExists(uid_t user) {
  if (::geteuid() == user) return true;
  if (::geteuid() != 0) return false;
  std::ifstream map("/proc/self/uid_map");
  std::uint64_t inside = 0;
  std::uint64_t outside = 0;
  std::uint64_t count = 0;
  while (map >> inside >> outside >> count) {
    if (user >= inside && user - inside < count) return true;
  }
  return false;
}

std::variant<pid_t, StartFailure> startJobProcess(const JobProcessOrder& order) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return StartFailure{errno};
  UniqueDescriptor readEnd(ends[0]);
  UniqueDescriptor writeEnd(ends[1]);
  const pid_t child = ::fork();
  if (child < 0) return StartFailure{errno};
  if (child == 0) becomeProgram(order, ends[1]);
  writeEnd.close();

  int error = 0;
  ssize_t count = 0;
  do count = ::read(readEnd.get(), &error, sizeof error);
  while (count < 0 && errno == EINTR);
  if (count != static_cast<ssize_t>(sizeof error)) return child;
  ::waitpid(child, nullptr, 0);
  return StartFailure{error};
}

std::optional<pid_t> startSessionCommand(const std::vector<std::string>& command, uid_t user,
                                         const ChildStreams& streams) {
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
