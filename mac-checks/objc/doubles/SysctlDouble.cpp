#include "mac-checks/objc/doubles/SysctlDouble.h"

#include <errno.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace halvo::sim {
namespace {

struct Script {
  std::vector<kinfo_proc> rows;
  std::size_t growth = 0;
  int growingAnswers = 0;
  bool refuses = false;
};

std::vector<kinfo_proc> thisProcess() {
  return {processRow(::getpid(), ::getppid(), ::geteuid(), program_invocation_short_name, 0)};
}

Script& script() {
  static Script current{.rows = thisProcess()};
  return current;
}

bool isTable(const int* name, unsigned length) {
  return length == 3 && name[0] == CTL_KERN && name[1] == KERN_PROC && name[2] == KERN_PROC_ALL;
}

int fail(int error) {
  errno = error;
  return -1;
}

}  // namespace

ProcessTable::ProcessTable(std::vector<kinfo_proc> rows) { script() = {.rows = std::move(rows)}; }
ProcessTable::~ProcessTable() { script() = {.rows = thisProcess()}; }

void ProcessTable::growBy(std::size_t processes, int answers) {
  script().growth = processes;
  script().growingAnswers = answers;
}

void ProcessTable::refuse() { script().refuses = true; }

kinfo_proc processRow(pid_t process, pid_t parent, uid_t user, const char* name, time_t age) {
  kinfo_proc row{};
  row.kp_proc.p_pid = process;
  row.kp_proc.p_starttime.tv_sec = ::time(nullptr) - age;
  std::memcpy(row.kp_proc.p_comm, name, std::min<std::size_t>(std::strlen(name), MAXCOMLEN));
  row.kp_eproc.e_ppid = parent;
  row.kp_eproc.e_ucred.cr_uid = user;
  return row;
}

}  // namespace halvo::sim

// As the kernel does: without room it tells how much there must be; with too little it fails.
int sysctl(int* name, unsigned length, void* old, size_t* oldSize, void* fresh, size_t freshSize) {
  using namespace halvo::sim;
  Script& current = script();
  if (!isTable(name, length) || fresh != nullptr || freshSize != 0) return fail(EINVAL);
  if (current.refuses) return fail(EPERM);
  if (old != nullptr && current.growingAnswers > 0) {
    --current.growingAnswers;
    current.rows.insert(current.rows.end(), current.growth, kinfo_proc{});
  }
  const std::size_t needed = current.rows.size() * sizeof(kinfo_proc);
  const std::size_t room = std::exchange(*oldSize, needed);
  if (old == nullptr) return 0;
  if (room < needed) return fail(ENOMEM);
  std::memcpy(old, current.rows.data(), needed);
  return 0;
}
