// Starts real child processes through posix_spawn(2).
#pragma once

#include "HalvoHelper/system/ProcessRunner.h"

namespace halvo {

// A child gets the helper's environment, working directory and standard input (/dev/null if the helper has none), its
// own process group, default signal dispositions, an empty signal mask, and no descriptor but 0, 1 and 2. Stateless.
// The process must not ignore SIGCHLD: the exit status is -1 then.
class RealProcessRunner final : public ProcessRunner {
 public:
  ProcessResult run(const std::string& tool, const std::vector<std::string>& arguments) const override;
};

}  // namespace halvo
