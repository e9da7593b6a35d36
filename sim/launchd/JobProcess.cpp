#include "sim/launchd/JobProcess.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/launchd/FreshProgram.h"
#include "sim/launchd/UserSwitch.h"

namespace halvo::sim {
namespace {

constexpr int kFirstPassed = 3;
// Above every number that a passed socket can get, so that moving one never overwrites another.
constexpr int kParkingSpace = 64;
constexpr int kExecFailed = 127;

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
  ::_exit(kExecFailed);
}

}  // namespace

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

}  // namespace halvo::sim
