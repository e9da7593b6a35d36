#include "sim/launchd/Session.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <map>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/launchd/ControlServer.h"
#include "sim/launchd/Launchd.h"
#include "sim/launchd/LaunchdPaths.h"
#include "sim/launchd/ProcessStart.h"
#include "sim/support/Processes.h"

namespace halvo::sim {
namespace {

constexpr int kCannotStart = 71;
constexpr int kRunningAlready = 75;
constexpr int kSignalBase = 128;

std::string lastError() { return std::generic_category().message(errno); }

// The signals come as readable data from here on, so that none is lost between two waits.
UniqueDescriptor takeSignals() {
  sigset_t signals{};
  sigemptyset(&signals);
  for (const int number : {SIGCHLD, SIGTERM, SIGINT, SIGHUP}) sigaddset(&signals, number);
  ::sigprocmask(SIG_BLOCK, &signals, nullptr);
  return UniqueDescriptor(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

class Session {
 public:
  Session(const LaunchdPaths& paths, ListeningSocket control, UniqueDescriptor signals)
      : launchd_(paths),
        server_(std::move(control),
                [this](const ControlRequest& request, const ControlServer::Client& client,
                       const ControlServer::Answer& answer) {
                  if (!startCommand(request, client, answer)) launchd_.handle(request, client.mayChange, answer);
                }),
        signals_(std::move(signals)) {}

  int run(const SessionOrder& order) {
    launchd_.boot();
    launchd_.work(Job::Clock::now());
    command_ = startSessionCommand(order.command, order.user);
    if (!command_) status_ = kProgramMissing;
    while (!status_) turn();
    if (interrupted_) finishWhatWasBegun();
    if (command_) ::kill(*command_, SIGTERM);
    for (const auto& [process, answer] : asked_) ::kill(-process, SIGKILL);
    // Whoever waits for them is told by the end of the connection that the machine has stopped.
    asked_.clear();
    launchd_.shutDown();
    while (!launchd_.allGone()) turn();
    return *status_;
  }

 private:
  // False when that is not what is asked for, or by somebody who may not.
  bool startCommand(const ControlRequest& request, const ControlServer::Client& client,
                    const ControlServer::Answer& answer) {
    const auto& words = request.arguments;
    if (request.verb != "run" || words.size() < 2 || client.passed.size() != kPassedStreams) return false;
    if (!client.mayChange) return false;
    const ChildStreams streams{client.passed[0].get(), client.passed[1].get(), client.passed[2].get()};
    const auto process =
        startSessionCommand({words.begin() + 1, words.end()}, static_cast<uid_t>(std::stoul(words[0])), streams);
    if (process) {
      asked_.emplace(*process, answer);
    } else {
      answer({0, std::to_string(kNoSuchUser)});
    }
    return true;
  }

  // Who interrupts a command has not switched a Mac off: the helper goes on with what it was asked for.
  void finishWhatWasBegun() {
    constexpr std::chrono::milliseconds kLook(50);
    if (!launchd_.serves()) return;
    std::cerr << "halvo-sim: what was begun is finished before the machine is switched off; Control-C does so now\n";
    while (!hurry_ && launchd_.serves()) turn(kLook);
  }

  // Waits for the next event, `longest` at most, and deals with it.
  void turn(std::chrono::milliseconds longest = std::chrono::minutes(1)) {
    const auto now = Job::Clock::now();
    std::vector<pollfd> entries;
    const auto watch = [&](int descriptor) { entries.push_back({.fd = descriptor, .events = POLLIN, .revents = 0}); };
    watch(signals_.get());
    std::ranges::for_each(server_.descriptors(), watch);
    std::ranges::for_each(launchd_.awaited(now), watch);
    ::poll(entries.data(), entries.size(), patience(now, longest));

    readSignals();
    collectChildren();
    // A job that comes back at once is back before anybody can ask for it.
    launchd_.work(Job::Clock::now());
    server_.serve();
    launchd_.work(Job::Clock::now());
  }

  [[nodiscard]] int patience(Launchd::TimePoint now, std::chrono::milliseconds longest) const {
    const auto deadline = launchd_.deadline(now);
    const auto left = deadline ? std::chrono::ceil<std::chrono::milliseconds>(*deadline - now) : longest;
    // Never zero: what is overdue and cannot be helped must not keep a processor busy.
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 1, longest.count()));
  }

  void readSignals() {
    signalfd_siginfo info{};
    while (::read(signals_.get(), &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
      const int number = static_cast<int>(info.ssi_signo);
      if (number == SIGCHLD) continue;
      // A terminal sends it to the command as well, which ends by it or has a use for it.
      if (number == SIGINT && command_) {
        interrupted_ = true;
        continue;
      }
      hurry_ = true;
      if (!status_) status_ = kSignalBase + number;
    }
  }

  void collectChildren() {
    while (true) {
      siginfo_t info{};
      if (::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) != 0 || info.si_pid == 0) return;
      const pid_t child = info.si_pid;
      // What a job leaves in its process group ends with it. Until the leader is collected the group's number cannot
      // have been given to anybody else.
      if (launchd_.isJob(child)) ::kill(-child, SIGTERM);
      int waitStatus = 0;
      ::waitpid(child, &waitStatus, 0);
      if (command_ == child) {
        command_.reset();
        if (!status_) status_ = exitStatusOf(waitStatus);
      }
      if (const auto asked = asked_.extract(child)) asked.mapped()({0, std::to_string(exitStatusOf(waitStatus))});
      launchd_.processEnded(child, waitStatus);
    }
  }

  Launchd launchd_;
  ControlServer server_;
  UniqueDescriptor signals_;
  std::optional<pid_t> command_;
  std::map<pid_t, ControlServer::Answer> asked_;  // the other commands that run, and who waits for their end
  std::optional<int> status_;
  bool interrupted_ = false;
  bool hurry_ = false;
};

// The folders that a job or a client expects, and nothing that an earlier life of the machine left in them.
bool prepareFolders(const LaunchdPaths& paths) {
  std::error_code error;
  std::filesystem::create_directories(paths.state / "job-output", error);
  if (!error) std::filesystem::create_directories(paths.machServices, error);
  if (error) return false;
  for (const auto& entry : std::filesystem::directory_iterator(paths.machServices, error)) {
    std::filesystem::remove(entry.path(), error);
  }
  return !error;
}

int cannotStart(const std::string& what) {
  std::cerr << "The machine cannot start: " << what << ".\n";
  return kCannotStart;
}

}  // namespace

int runSession(const SessionOrder& order) {
  const LaunchdPaths paths = launchdPaths(order.root);
  const UniqueDescriptor lock(::open((paths.state / "machine.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  if (!lock.valid()) return cannotStart("its state folder cannot be used: " + lastError());
  if (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
    std::cerr << "This machine is running already; stop that first, or use another one.\n";
    return kRunningAlready;
  }
  if (!prepareFolders(paths)) return cannotStart("its folders cannot be prepared");
  // Without a process namespace of its own, what a job leaves behind would otherwise escape to the host's first
  // process.
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);
  UniqueDescriptor signals = takeSignals();
  auto control = ListeningSocket::open(paths.state / "launchd.sock", SOCK_SEQPACKET);
  if (!signals.valid() || !control) return cannotStart("its control socket cannot be opened: " + lastError());

  const int status = Session(paths, std::move(*control), std::move(signals)).run(order);
  endDescendants();
  return status;
}

}  // namespace halvo::sim
