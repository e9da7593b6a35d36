// One boot of a simulated machine with the agent in it.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <future>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/harness/CommandResult.h"

namespace halvo::sim {

class MachineSession {
 public:
  // Boots and waits for the agent's greeting; `errors` is a file for what goes wrong. A std::runtime_error with the
  // machine's own words when it does not start.
  MachineSession(const std::filesystem::path& machine, const std::filesystem::path& errors);
  MachineSession(const MachineSession&) = delete;
  MachineSession& operator=(const MachineSession&) = delete;
  // Shuts down and waits for the end; commands still running are answered with the status -1.
  ~MachineSession();

  [[nodiscard]] bool severalUsers() const { return severalUsers_; }

  // Any thread.
  std::future<CommandResult> run(uid_t user, const std::vector<std::string>& argv, const std::string& input);

 private:
  // Returns at the end of the agent's answers.
  void readReplies();
  void deliver(const std::string& line);
  void failWaiting();

  // A reply under a new number; answered at once when the machine has ended.
  std::pair<std::int64_t, std::future<CommandResult>> expectReply();

  pid_t process_ = 0;
  UniqueDescriptor fromAgent_;
  std::string received_;  // the reader's own
  bool severalUsers_ = false;
  // Two locks: sending may have to wait until the agent has got rid of its answers, and the reader takes those.
  std::mutex sending_;  // guards toAgent_
  UniqueDescriptor toAgent_;
  std::mutex mutex_;  // guards everything below but the reader
  std::map<std::int64_t, std::promise<CommandResult>> waiting_;
  std::int64_t nextId_ = 1;
  bool over_ = false;
  std::thread reader_;
};

}  // namespace halvo::sim
