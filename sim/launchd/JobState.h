// What launchd tells about its jobs to whoever watches: the file jobs.json in the machine's state folder.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace halvo::sim {

struct JobState {
  std::string domain;  // "system" or "gui/501"
  std::string label;
  std::string program;
  std::optional<pid_t> pid;           // as seen inside the machine; nothing while no process runs
  int starts = 0;                     // how many processes the job has had since it was loaded
  std::optional<int> lastExitStatus;  // exit status of the last process, 128 + signal when one ended it
  bool operator==(const JobState&) const = default;
};

std::string jobStatesToJSON(const std::vector<JobState>& jobs);

// Nothing when the text is not what jobStatesToJSON() writes.
std::optional<std::vector<JobState>> jobStatesFromJSON(std::string_view text);

}  // namespace halvo::sim
