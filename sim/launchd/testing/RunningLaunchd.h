// A launchd over folders of its own, outside any simulated machine, and the fixture of the tests that look at it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/types.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/launchd/ControlClient.h"
#include "sim/launchd/JobState.h"

namespace halvo::sim {

class RunningLaunchd {
 public:
  RunningLaunchd() = default;
  RunningLaunchd(const RunningLaunchd&) = delete;
  RunningLaunchd& operator=(const RunningLaunchd&) = delete;
  ~RunningLaunchd();

  // Switches on, with a session command that lives until stop(); a std::runtime_error when that fails.
  void start();
  // Ends the session command and answers launchd's exit status.
  int stop();
  // Ends launchd itself with a signal; answers its exit status.
  int end(int signal);
  // One session for `command`; its exit status.
  int runSession(const std::vector<std::string>& command) const;

  // Writes a property list for the test job with these arguments; `extra` is further XML. Answers its path.
  std::string job(const std::string& folder, const std::string& label, const std::vector<std::string>& arguments,
                  const std::string& extra = {}) const;

  [[nodiscard]] ControlClient control() const;
  // The job as jobs.json shows it; nothing when it is not there.
  [[nodiscard]] std::optional<JobState> state(const std::string& domain, const std::string& label) const;
  [[nodiscard]] std::filesystem::path service(const std::string& name) const;
  // Connects to a service, sends `word` and answers what the job tells about itself; null when nobody answers.
  nlohmann::json ask(const std::string& name, const std::string& word = "i") const;

  TemporaryDirectory root;

 private:
  [[nodiscard]] pid_t spawn(const std::vector<std::string>& command, int input, int output) const;

  pid_t process_ = 0;
  UniqueDescriptor toCommand_;
};

// Whether a process of that number exists and has not ended yet.
bool alive(pid_t process);

// The XML of a property list that publishes one service.
std::string publishing(const std::string& service);

inline constexpr const char* kDaemons = "Library/LaunchDaemons";
inline constexpr const char* kElsewhere = "elsewhere";
inline const std::string kNoThrottle = "<key>ThrottleInterval</key><integer>0</integer>";
inline const std::string kAtLoad = "<key>RunAtLoad</key><true/>";
inline const std::string kAlways = "<key>KeepAlive</key><true/>";

class LaunchdTest : public testing::Test {
 protected:
  bool runs(const std::string& label) const {
    const auto job = launchd.state("system", label);
    return job && job->pid;
  }

  RunningLaunchd launchd;
};

}  // namespace halvo::sim
