#include "platform/ProcessList.h"

#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <system_error>

#include "sim/support/ProcessIdentity.h"
#include "sim/support/SimClock.h"
#include "sim/support/WholeFile.h"

namespace halvo {
namespace {

std::optional<pid_t> numberIn(const std::string& name) {
  pid_t number = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
  return error == std::errc() && end == name.data() + name.size() ? std::optional(number) : std::nullopt;
}

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
  std::error_code error;
  std::vector<ProcessEntry> entries;
  for (const auto& item : std::filesystem::directory_iterator("/proc", error)) {
    const auto process = numberIn(item.path().filename().string());
    auto entry = process ? entryFor(*process) : std::nullopt;
    if (entry) entries.push_back(std::move(*entry));
  }
  return error ? std::nullopt : std::optional(std::move(entries));
}

}  // namespace halvo
