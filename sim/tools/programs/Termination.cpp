#include "sim/tools/programs/Termination.h"

namespace halvo::sim {

Termination::Termination() {
  sigemptyset(&signals_);
  sigaddset(&signals_, SIGTERM);
  sigprocmask(SIG_BLOCK, &signals_, nullptr);
}

void Termination::wait() const {
  int received = 0;
  while (sigwait(&signals_, &received) != 0) {
  }
}

}  // namespace halvo::sim
