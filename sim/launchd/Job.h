// One job that launchd has loaded: its services, its process, and when that process is to be started or killed.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "sim/launchd/JobDescription.h"
#include "sim/launchd/JobState.h"
#include "sim/launchd/LaunchdPaths.h"
#include "sim/support/UnixSocket.h"

namespace halvo::sim {

class Job {
 public:
  using Clock = std::chrono::steady_clock;
  using WhenGone = std::function<void()>;

  Job(std::string domain, JobDescription description);

  // Begins to answer for the job's services; why not, if that fails.
  std::optional<std::string> publish(const std::filesystem::path& machServices);
  // No client finds the services any more. The process, if one runs, keeps its own hold on them.
  void withdraw();

  // Starts the process if the job wants one to run, or somebody is waiting at a service; not before the throttle
  // interval since the last start has passed. True when something changed.
  bool startIfDue(Clock::time_point now, const LaunchdPaths& paths);
  // When, after `now`, startIfDue() or killIfOverdue() has something to do without any event; nothing when never.
  [[nodiscard]] std::optional<Clock::time_point> deadline(Clock::time_point now) const;
  // The sockets whose becoming readable calls for startIfDue() at `now`.
  [[nodiscard]] std::vector<int> awaited(Clock::time_point now) const;

  // The process with this wait status has been collected.
  void processEnded(int waitStatus);
  // Asks the process to end, and has it killed when it takes too long. The job never starts again. `whenGone` is called
  // by whoever forgets the job; that of a second call never is.
  void terminate(Clock::time_point now, WhenGone whenGone);
  void killIfOverdue(Clock::time_point now) const;
  // Sends a signal to the process, when one runs.
  void signal(int number) const;

  [[nodiscard]] const std::string& domain() const { return domain_; }
  [[nodiscard]] const JobDescription& description() const { return description_; }
  [[nodiscard]] std::optional<pid_t> process() const { return process_; }
  // Whether the process holds a connection: a socket that it was not started with.
  [[nodiscard]] bool serves() const;
  // terminate() was called.
  [[nodiscard]] bool ending() const { return ending_; }
  // On its way out: nothing more is to be expected of it than the end of its process.
  [[nodiscard]] bool leaving() const { return ending_ || withdrawn_; }
  [[nodiscard]] const WhenGone& whenGone() const { return whenGone_; }
  [[nodiscard]] JobState state() const;
  // As waitpid(2) has it; nothing when no process has ended.
  [[nodiscard]] std::optional<int> lastWaitStatus() const { return lastWaitStatus_; }

 private:
  [[nodiscard]] bool wantsProcess() const;
  void start(Clock::time_point now, const LaunchdPaths& paths);

  std::string domain_;
  JobDescription description_;
  std::vector<ListeningSocket> sockets_;  // in the order of description_.machServices
  std::optional<pid_t> process_;
  int starts_ = 0;
  std::optional<int> lastWaitStatus_;
  bool loadStartDone_ = false;
  bool ending_ = false;
  bool withdrawn_ = false;
  Clock::time_point notBefore_{};
  std::optional<Clock::time_point> killAt_;  // nothing while the process may take the time it likes
  WhenGone whenGone_;
};

}  // namespace halvo::sim
