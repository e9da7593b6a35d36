#include "client/InterruptHandling.h"

#include <unistd.h>

#include <csignal>
#include <string_view>

#include "client/ExitStatus.h"

namespace halvo {
namespace {

constexpr std::string_view kFarewell = "\nhalvo-app: interrupted; what the helper has begun, it finishes\n";

// Runs in the middle of anything: nothing here takes a lock or memory.
extern "C" void farewell(int /*signal*/) {
  static_cast<void>(::write(STDERR_FILENO, kFarewell.data(), kFarewell.size()) < 0);
  ::_exit(static_cast<int>(ExitStatus::interruptedByUser));
}

}  // namespace

void endWithStatusOnInterrupt() {
  struct sigaction action {};
  action.sa_handler = farewell;
  sigemptyset(&action.sa_mask);
  ::sigaction(SIGINT, &action, nullptr);
}

}  // namespace halvo
