// A child process of a test that runs until it is told to end.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>

#include "sim/support/CodeSignature.h"

namespace halvo::sim {

// Copies cat(1), which waits for its input to end, to `place`, and signs the copy if asked to.
void makeWaitingProgram(const std::filesystem::path& place, const std::optional<CodeSignature>& signature);

class RunningProgram {
 public:
  // Runs already when this returns. As `user` if given, which needs root.
  explicit RunningProgram(const std::filesystem::path& program, std::optional<uid_t> user = std::nullopt);
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;
  ~RunningProgram();

  pid_t pid() const { return pid_; }

  // Ends it and waits until it has gone.
  void end();

 private:
  pid_t pid_ = -1;
  int input_ = -1;
};

}  // namespace halvo::sim
