// The simulated launchd without its sockets and signals: loads and unloads jobs, and says what is to happen next.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "sim/launchd/ControlClient.h"
#include "sim/launchd/Domain.h"
#include "sim/launchd/JobTable.h"
#include "sim/launchd/LaunchdPaths.h"
#include "sim/launchd/Registrations.h"

namespace halvo::sim {

class Launchd {
 public:
  using Answer = std::function<void(const ControlReply&)>;
  using TimePoint = Job::Clock::time_point;

  explicit Launchd(LaunchdPaths paths);

  // Loads what comes with the system, what is installed, what is registered, and the agents of everybody logged in.
  void boot();
  // Works on a request of somebody who may change things or may only look. `answer` is called exactly once: now, or
  // for a bootout when the job is gone.
  void handle(const ControlRequest& request, bool mayChange, const Answer& answer);

  // Starts and kills what is due at `now`, and publishes the job table when it has changed.
  void work(TimePoint now);
  // What to wait for until the next work(): sockets that become readable, and a moment.
  [[nodiscard]] std::vector<int> awaited(TimePoint now) const;
  [[nodiscard]] std::optional<TimePoint> deadline(TimePoint now) const;

  [[nodiscard]] bool isJob(pid_t process) const { return jobs_.findProcess(process) != nullptr; }
  void processEnded(pid_t process, int waitStatus);
  // Whether a job has somebody's connection open.
  [[nodiscard]] bool serves() const;

  // Boots out every job; allGone() says when that is done.
  void shutDown();
  [[nodiscard]] bool allGone() const { return jobs_.all().empty(); }

 private:
  ControlReply bootstrap(const std::string& domain, const std::string& plist);
  void bootout(const std::string& target, const Answer& answer);
  [[nodiscard]] ControlReply print(const std::string& target) const;
  [[nodiscard]] ControlReply killall(const std::string& name) const;
  ControlReply registerService(const std::string& plist);
  ControlReply submitService(const std::string& plist);
  [[nodiscard]] std::string registrationOf(const std::string& plist) const;
  ControlReply unregisterService(const std::string& plistName);

  ControlReply load(const std::string& domain, const std::filesystem::path& plist);
  void loadFolder(const std::string& domain, const std::filesystem::path& folder);
  void unload(Job& job, Job::WhenGone whenGone);
  [[nodiscard]] bool exists(const std::string& domain) const;
  void note(const std::string& line) const;

  LaunchdPaths paths_;
  JobTable jobs_;
  Registrations registrations_;
  Registrations unapproved_;  // registered, and waiting for an administrator
  bool changed_ = true;
};

}  // namespace halvo::sim
