// One boot of a simulated machine, and the commands that run in it meanwhile.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <future>
#include <string>
#include <vector>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/launchd/ControlClient.h"
#include "sim/support/ChildProcess.h"

namespace halvo::sim {

class MachineSession {
 public:
  // Boots and waits until launchd has loaded its jobs; `errors` is a file for what goes wrong. A std::runtime_error
  // with the machine's own words when it does not start.
  MachineSession(const std::filesystem::path& machine, const std::filesystem::path& errors);
  MachineSession(const MachineSession&) = delete;
  MachineSession& operator=(const MachineSession&) = delete;
  // Shuts down and waits for the end; commands still running are answered with the status -1.
  ~MachineSession();

  // Whether more accounts than root can be had.
  [[nodiscard]] bool severalUsers() const { return severalUsers_; }

  // Any thread.
  [[nodiscard]] std::future<CommandResult> run(uid_t user, const std::vector<std::string>& argv,
                                               const std::string& input) const;

 private:
  void shutDown();

  const ControlClient launchd_;
  pid_t process_ = 0;
  UniqueDescriptor keepsRunning_;
  bool severalUsers_ = false;
};

}  // namespace halvo::sim
