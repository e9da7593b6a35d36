// How the product's small programs end.
#pragma once

#include <csignal>

namespace halvo::sim {

// From its construction on, launchd's request to end (SIGTERM) is kept until somebody waits for it. Make it before
// starting threads.
class Termination {
 public:
  Termination() {
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGTERM);
    sigprocmask(SIG_BLOCK, &signals_, nullptr);
  }

  // Blocks until launchd asks the process to end.
  void wait() const {
    int received = 0;
    while (sigwait(&signals_, &received) != 0) {
    }
  }

 private:
  sigset_t signals_{};
};

}  // namespace halvo::sim
