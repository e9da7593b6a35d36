#include "sim/demo/Supervision.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <system_error>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/support/Processes.h"

namespace halvo::sim {
namespace {

bool isIgnored(int number) {
  struct sigaction action {};
  return ::sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

// What nohup, or a shell for its background, has had ignored stays so.
sigset_t awaitedSignals() {
  sigset_t signals{};
  sigemptyset(&signals);
  sigaddset(&signals, SIGCHLD);
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    if (!isIgnored(number)) sigaddset(&signals, number);
  }
  return signals;
}

// The signals of a person or of the system stay blocked, here and in every process that comes of this one until it says
// otherwise: a Control-C of the terminal, which they all get, must not end them in any order.
[[noreturn]] void doWork(const std::function<int()>& work, const TemporaryDirectory& scratch) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  sigset_t child{};
  sigemptyset(&child);
  sigaddset(&child, SIGCHLD);
  ::sigprocmask(SIG_UNBLOCK, &child, nullptr);
  ::setenv("TMPDIR", scratch.path().c_str(), 1);
  std::exit(work());
}

// The wait status of the child, or nothing and the signal that came first.
std::optional<int> endOf(pid_t child, const sigset_t& signals, int& signal) {
  while (true) {
    ::sigwait(&signals, &signal);
    if (signal != SIGCHLD) return std::nullopt;
    int status = 0;
    if (::waitpid(child, &status, WNOHANG) == child) return status;
  }
}

[[noreturn]] void endBySignal(int number) {
  std::signal(number, SIG_DFL);
  sigset_t all{};
  sigfillset(&all);
  ::sigprocmask(SIG_UNBLOCK, &all, nullptr);
  ::raise(number);
  ::_exit(128 + number);
}

}  // namespace

int supervised(const std::function<int()>& work) {
  // Whoever has started this one may have had it ignored, and then no child could be waited for.
  std::signal(SIGCHLD, SIG_DFL);
  const sigset_t signals = awaitedSignals();
  ::sigprocmask(SIG_BLOCK, &signals, nullptr);
  // What the work leaves behind becomes a child of this process, so that it can be found.
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);
  int signal = 0;
  std::optional<int> status;
  {
    const TemporaryDirectory scratch;
    const pid_t child = ::fork();
    if (child < 0) throw std::system_error(errno, std::generic_category(), "no process can be started");
    if (child == 0) doWork(work, scratch);
    status = endOf(child, signals, signal);
    endDescendants();
  }
  if (!status) endBySignal(signal);
  if (WIFSIGNALED(*status)) endBySignal(WTERMSIG(*status));
  return WEXITSTATUS(*status);
}

}  // namespace halvo::sim
