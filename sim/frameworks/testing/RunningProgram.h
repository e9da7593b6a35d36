// A child process of a test that runs until it is told to end.
#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <stdexcept>

#include "sim/support/ChildProcess.h"
#include "sim/support/CodeSignature.h"

namespace halvo::sim {

// Copies cat(1), which waits for its input to end, to `place`, and signs the copy if asked to.
inline void makeWaitingProgram(const std::filesystem::path& place, const std::optional<CodeSignature>& signature) {
  std::filesystem::copy_file("/bin/cat", place);
  if (signature && !signExecutable(place, *signature)) throw std::runtime_error(place.string() + " cannot be signed");
}

class RunningProgram {
 public:
  // Runs already when this returns. As `user` if given, which needs root.
  explicit RunningProgram(const std::filesystem::path& program, std::optional<uid_t> user = std::nullopt) {
    // Root of old, and root again when the program runs: only the saved number has to stay.
    if (user) static_cast<void>(::setresuid(*user, *user, 0) == 0);
    process_ = startChild({program}, {.in = input_.out.get()}).value();
    if (user) static_cast<void>(::setresuid(0, 0, 0) == 0);
    input_.out.close();
  }
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;
  ~RunningProgram() { end(); }

  pid_t pid() const { return process_; }

  // Ends it and waits until it has gone.
  void end() {
    if (input_.in.valid() && input_.in.close()) collectChild(process_);
  }

 private:
  Pipe input_ = makePipe();
  pid_t process_ = -1;
};

}  // namespace halvo::sim
