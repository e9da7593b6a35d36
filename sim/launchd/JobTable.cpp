#include "sim/launchd/JobTable.h"

#include <algorithm>
#include <fstream>
#include <system_error>
#include <utility>

namespace halvo::sim {
namespace {

template <typename Predicate>
Job* firstWhere(const std::vector<std::unique_ptr<Job>>& jobs, Predicate predicate) {
  const auto found = std::ranges::find_if(jobs, [&](const auto& job) { return predicate(*job); });
  return found == jobs.end() ? nullptr : found->get();
}

}  // namespace

Job* JobTable::find(const std::string& domain, const std::string& label) const {
  return firstWhere(jobs_, [&](const Job& job) { return job.domain() == domain && job.description().label == label; });
}

Job* JobTable::findProcess(pid_t process) const {
  return firstWhere(jobs_, [&](const Job& job) { return job.process() == process; });
}

Job* JobTable::findPlist(const std::filesystem::path& plist) const {
  return firstWhere(jobs_, [&](const Job& job) { return job.description().plist == plist; });
}

bool JobTable::publishes(const std::string& service) const {
  return firstWhere(jobs_, [&](const Job& job) {
           return !job.leaving() && std::ranges::count(job.description().machServices, service) > 0;
         }) != nullptr;
}

Job& JobTable::add(std::unique_ptr<Job> job) { return *jobs_.emplace_back(std::move(job)); }

void JobTable::remove(const Job& job) {
  const Job::WhenGone whenGone = job.whenGone();
  std::erase_if(jobs_, [&](const auto& entry) { return entry.get() == &job; });
  if (whenGone) whenGone();
}

bool JobTable::publish(const std::filesystem::path& file) const {
  std::vector<JobState> states;
  for (const auto& job : jobs_) states.push_back(job->state());
  const std::filesystem::path fresh = file.string() + ".new";
  std::ofstream out(fresh, std::ios::trunc);
  out << jobStatesToJSON(states);
  out.close();
  if (!out) return false;
  std::error_code error;
  std::filesystem::rename(fresh, file, error);
  return !error;
}

}  // namespace halvo::sim
