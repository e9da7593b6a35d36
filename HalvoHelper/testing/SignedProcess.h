// A real process whose program carries a code signature of the simulated Mac.
#pragma once

#include <mach/message.h>
#include <sys/types.h>

#include <filesystem>
#include <optional>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/support/CodeSignature.h"

namespace halvo {

// Starts a copy of a small program that does nothing until it is ended, at the latest when this object goes. Throws
// when that cannot be done.
class SignedProcess {
 public:
  explicit SignedProcess(const std::optional<sim::CodeSignature>& signature);
  SignedProcess(const SignedProcess&) = delete;
  SignedProcess& operator=(const SignedProcess&) = delete;
  ~SignedProcess();

  // As the kernel would give it for a connection of this process; stays the same after it ended.
  const audit_token_t& auditToken() const { return token_; }
  pid_t pid() const { return pid_; }

  // Where its program lies.
  std::filesystem::path program() const { return directory_.path() / "client"; }

  // Ends the process and waits until it is gone.
  void end();

 private:
  TemporaryDirectory directory_;
  int input_ = -1;  // the process ends when this is closed
  pid_t pid_ = -1;
  audit_token_t token_{};
};

}  // namespace halvo
