// Stands in for the kernel's table of processes behind sysctl(3).
#pragma once

#include <sys/sysctl.h>

#include <vector>

namespace halvo::sim {

// From the construction on the table is this one; afterwards it is the calling process alone. One at a time.
class ProcessTable {
 public:
  explicit ProcessTable(std::vector<kinfo_proc> rows);
  ProcessTable(const ProcessTable&) = delete;
  ProcessTable& operator=(const ProcessTable&) = delete;
  ~ProcessTable();

  // Before each of the next answers that many processes start, after their number was told.
  void growBy(std::size_t processes, int answers);
  // The kernel refuses to tell.
  void refuse();
};

// A process that started that many seconds ago; a name is cut as the kernel cuts it.
kinfo_proc processRow(pid_t process, pid_t parent, uid_t user, const char* name, time_t age);

}  // namespace halvo::sim
