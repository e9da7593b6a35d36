#include "platform/ProcessList.h"

#include <sys/sysctl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <ctime>
#include <span>

namespace halvo {
namespace {

// Room for what starts between the two calls, and how often more than that may start.
constexpr std::size_t kSpare = 64;
constexpr int kAttempts = 5;

// KERN_PROC, as ps(1) uses it: unlike what libproc offers, it tells an ordinary user the age of root's processes.
std::optional<std::vector<kinfo_proc>> processTable() {
  std::array<int, 3> name = {CTL_KERN, KERN_PROC, KERN_PROC_ALL};
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    std::size_t size = 0;
    if (::sysctl(name.data(), name.size(), nullptr, &size, nullptr, 0) != 0) return std::nullopt;
    std::vector<kinfo_proc> rows(size / sizeof(kinfo_proc) + kSpare);
    size = rows.size() * sizeof(kinfo_proc);
    if (::sysctl(name.data(), name.size(), rows.data(), &size, nullptr, 0) == 0) {
      rows.resize(size / sizeof(kinfo_proc));
      return rows;
    }
    if (errno != ENOMEM) return std::nullopt;
  }
  return std::nullopt;
}

ProcessEntry toEntry(const kinfo_proc& row, std::time_t now) {
  const std::span<const char> name(row.kp_proc.p_comm);
  return {.process = row.kp_proc.p_pid,
          .parent = row.kp_eproc.e_ppid,
          .user = row.kp_eproc.e_ucred.cr_uid,
          .name = std::string(name.begin(), std::ranges::find(name, '\0')),
          // A clock that was set back must not make it negative.
          .age = std::chrono::seconds(std::max<std::time_t>(0, now - row.kp_proc.p_starttime.tv_sec))};
}

}  // namespace

std::optional<std::vector<ProcessEntry>> halvoRunningProcesses() {
  const auto rows = processTable();
  if (!rows) return std::nullopt;
  const std::time_t now = std::time(nullptr);
  std::vector<ProcessEntry> entries;
  entries.reserve(rows->size());
  for (const kinfo_proc& row : *rows) entries.push_back(toEntry(row, now));
  return entries;
}

}  // namespace halvo
