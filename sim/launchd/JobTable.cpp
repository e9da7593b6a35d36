#include "sim/launchd/JobTable.h"

#include <sys/wait.h>

#include <algorithm>
#include <cstring>
#include <sstream>
#include <utility>

#include "sim/support/Files.h"

namespace halvo::sim {
namespace {

template <typename Predicate>
Job* firstWhere(const std::vector<std::unique_ptr<Job>>& jobs, Predicate predicate) {
  const auto found = std::ranges::find_if(jobs, [&](const auto& job) { return predicate(*job); });
  return found == jobs.end() ? nullptr : found->get();
}

// In launchctl's words.
std::string lastEnd(const std::optional<int>& waitStatus) {
  if (!waitStatus) return "last exit code = (never exited)";
  if (!WIFSIGNALED(*waitStatus)) return "last exit code = " + std::to_string(WEXITSTATUS(*waitStatus));
  const int signal = WTERMSIG(*waitStatus);
  return "last terminating signal = " + std::string(::strsignal(signal)) + ": " + std::to_string(signal);
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
  return replaceFile(file, jobStatesToJSON(states));
}

std::string describeJob(const Job& job) {
  const JobState state = job.state();
  std::ostringstream out;
  out << state.domain << "/" << state.label << " = {\n"
      << "\tpath = " << job.description().plist.string() << "\n"
      << "\tstate = " << (state.pid ? "running" : "not running") << "\n"
      << "\tprogram = " << state.program << "\n"
      << "\truns = " << state.starts << "\n";
  if (state.pid) out << "\tpid = " << *state.pid << "\n";
  out << "\t" << lastEnd(job.lastWaitStatus()) << "\n";
  for (const std::string& service : job.description().machServices) out << "\tendpoint = " << service << "\n";
  out << "}";
  return out.str();
}

std::string describeDomain(const std::string& domain, const JobTable& jobs) {
  std::ostringstream out;
  out << domain << " = {\n\tservices = {\n";
  for (const auto& job : jobs.all()) {
    const JobState state = job->state();
    if (state.domain != domain) continue;
    out << "\t\t" << state.pid.value_or(0) << "\t"
        << (state.lastExitStatus ? std::to_string(*state.lastExitStatus) : "-") << "\t" << state.label << "\n";
  }
  out << "\t}\n}";
  return out.str();
}

}  // namespace halvo::sim
