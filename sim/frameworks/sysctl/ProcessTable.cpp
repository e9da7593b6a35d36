// The kernel's table of processes, as /proc shows it.
#include <sys/stat.h>
#include <sys/sysctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "sim/support/Files.h"
#include "sim/support/Processes.h"
#include "sim/support/SimClock.h"

namespace halvo::sim {
namespace {

// Processes age as fast as the machine's clock runs.
time_t ageOf(std::uint64_t startTicks) {
  timespec now{};
  ::clock_gettime(CLOCK_BOOTTIME, &now);
  const double uptime = static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
  const double start = static_cast<double>(startTicks) / static_cast<double>(::sysconf(_SC_CLK_TCK));
  return static_cast<time_t>((uptime - start) * clockRate());
}

std::optional<kinfo_proc> rowFor(pid_t process) {
  const std::string folder = "/proc/" + std::to_string(process);
  const auto facts = processFacts(process);
  struct stat info {};
  if (!facts || ::stat(folder.c_str(), &info) != 0) return std::nullopt;
  std::string name = wholeFile(folder + "/comm");
  if (name.ends_with('\n')) name.pop_back();
  kinfo_proc row{};
  row.kp_proc.p_pid = process;
  row.kp_proc.p_starttime.tv_sec = std::time(nullptr) - ageOf(facts->startTime);
  std::memcpy(row.kp_proc.p_comm, name.data(), std::min<std::size_t>(name.size(), MAXCOMLEN));
  row.kp_eproc.e_ppid = facts->parent;
  row.kp_eproc.e_ucred.cr_uid = info.st_uid;
  return row;
}

std::vector<kinfo_proc> allRows() {
  std::vector<kinfo_proc> rows;
  for (const pid_t process : processNumbers().value_or(std::vector<pid_t>())) {
    if (const auto row = rowFor(process)) rows.push_back(*row);
  }
  return rows;
}

int failWith(int error) {
  errno = error;
  return -1;
}

}  // namespace
}  // namespace halvo::sim

// Knows the table of all processes, which nobody can change. Without room it says how much is needed.
extern "C" int sysctl(int* name, unsigned length, void* old, size_t* oldSize, void* fresh, size_t) {
  using namespace halvo::sim;
  if (length != 3 || name[0] != CTL_KERN || name[1] != KERN_PROC || name[2] != KERN_PROC_ALL) return failWith(ENOENT);
  if (fresh != nullptr) return failWith(EPERM);
  const std::vector<kinfo_proc> rows = allRows();
  const std::size_t needed = rows.size() * sizeof(kinfo_proc);
  if (old != nullptr && *oldSize < needed) return failWith(ENOMEM);
  *oldSize = needed;
  if (old != nullptr) std::memcpy(old, rows.data(), needed);
  return 0;
}
