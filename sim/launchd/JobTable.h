// The jobs that launchd has loaded, and the file that shows them to whoever watches the machine.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "sim/launchd/Job.h"

namespace halvo::sim {

class JobTable {
 public:
  // Pointers stay good until the job is removed; null when there is none.
  [[nodiscard]] Job* find(const std::string& domain, const std::string& label) const;
  [[nodiscard]] Job* findProcess(pid_t process) const;
  [[nodiscard]] Job* findPlist(const std::filesystem::path& plist) const;
  // Whether a job that is still answered for publishes the service.
  [[nodiscard]] bool publishes(const std::string& service) const;

  Job& add(std::unique_ptr<Job> job);
  // Forgets the job, then tells whoever waited for that.
  void remove(const Job& job);

  [[nodiscard]] const std::vector<std::unique_ptr<Job>>& all() const { return jobs_; }
  // Writes the file anew in one step, so that a reader never sees half of it; false when that fails.
  [[nodiscard]] bool publish(const std::filesystem::path& file) const;

 private:
  std::vector<std::unique_ptr<Job>> jobs_;
};

// What `launchctl print` shows.
std::string describeJob(const Job& job);
std::string describeDomain(const std::string& domain, const JobTable& jobs);

}  // namespace halvo::sim
