// One command that the agent runs.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/harness/AgentMessages.h"

namespace halvo::sim {

// The command has files without a name as its standard streams: neither side ever waits for the other, and what a
// command leaves running in the background does not delay its answer.
class AgentChild {
 public:
  // Starts the command in a process group of its own. Nothing, with errno set, when no process can be made; a program
  // or user that does not exist is told by the command's own exit status (127, 126) and error output.
  static std::optional<AgentChild> start(const AgentRequest& request);

  [[nodiscard]] pid_t process() const { return process_; }
  // The answer once the process has been collected with this wait status.
  [[nodiscard]] AgentReply reply(int waitStatus) const;

 private:
  std::int64_t id_ = 0;
  pid_t process_ = 0;
  UniqueDescriptor out_;
  UniqueDescriptor err_;
};

}  // namespace halvo::sim
