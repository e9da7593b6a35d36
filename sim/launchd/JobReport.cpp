#include "sim/launchd/JobReport.h"

#include <sys/wait.h>

#include <cstring>
#include <sstream>

namespace halvo::sim {
namespace {

// In launchctl's words.
std::string lastEnd(const std::optional<int>& waitStatus) {
  if (!waitStatus) return "last exit code = (never exited)";
  if (!WIFSIGNALED(*waitStatus)) return "last exit code = " + std::to_string(WEXITSTATUS(*waitStatus));
  const int signal = WTERMSIG(*waitStatus);
  return "last terminating signal = " + std::string(::strsignal(signal)) + ": " + std::to_string(signal);
}

}  // namespace

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
