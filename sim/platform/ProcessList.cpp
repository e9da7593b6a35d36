#include "platform/ProcessList.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <ctime>
#include <utility>

#include "sim/support/Files.h"
#include "sim/support/Processes.h"
#include "sim/support/SimClock.h"

namespace halvo {
namespace {

// Processes age as fast as the machine's clock runs.
std::chrono::seconds ageOf(std::uint64_t startTicks) {
  timespec now{};
  ::clock_gettime(CLOCK_BOOTTIME, &now);
  const double uptime = static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
  const double start = static_cast<double>(startTicks) / static_cast<double>(::sysconf(_SC_CLK_TCK));
  return std::chrono::seconds(static_cast<std::int64_t>((uptime - start) * sim::clockRate()));
}

std::optional<ProcessEntry> entryFor(pid_t process) {
  const std::string folder = "/proc/" + std::to_string(process);
  const auto facts = sim::processFacts(process);
  struct stat info {};
  if (!facts || ::stat(folder.c_str(), &info) != 0) return std::nullopt;
  std::string name = sim::wholeFile(folder + "/comm");
  if (name.ends_with('\n')) name.pop_back();
  return ProcessEntry{.process = process,
                      .parent = facts->parent,
                      .user = info.st_uid,
                      .name = std::move(name),
                      .age = ageOf(facts->startTime)};
}

}  // namespace

std::optional<std::vector<ProcessEntry>> halvoRunningProcesses() {
  const auto processes = sim::processNumbers();
  if (!processes) return std::nullopt;
  std::vector<ProcessEntry> entries;
  for (const pid_t process : *processes) {
    if (auto entry = entryFor(process)) entries.push_back(std::move(*entry));
  }
  return entries;
}

}  // namespace halvo
