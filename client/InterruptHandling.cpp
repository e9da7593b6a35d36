#include "client/InterruptHandling.h"

#include <unistd.h>

#include <atomic>
#include <csignal>
#include <string_view>

#include "client/ExitStatus.h"

namespace halvo {
namespace {

constexpr std::string_view kFarewell = "\nhalvo-app: interrupted; what the helper has begun, it finishes\n";

// Read by the handlers, in the middle of anything.
std::atomic<const char*> leftFile = nullptr;
std::atomic<const char*> leftFolder = nullptr;
static_assert(std::atomic<const char*>::is_always_lock_free);

// Nothing here, and in what calls it, takes a lock or memory.
void removeWhatIsLeft() {
  if (const char* file = leftFile.load()) ::unlink(file);
  if (const char* folder = leftFolder.load()) ::rmdir(folder);
}

extern "C" void farewell(int /*signal*/) {
  removeWhatIsLeft();
  [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, kFarewell.data(), kFarewell.size());
  ::_exit(static_cast<int>(ExitStatus::interruptedByUser));
}

// Raised anew, the signal does what it always does as soon as this returns.
extern "C" void removeAndEnd(int signal) {
  removeWhatIsLeft();
  static_cast<void>(::signal(signal, SIG_DFL));
  static_cast<void>(::raise(signal));
}

// A program that was started so that it outlives its window goes on doing so.
bool isIgnored(int signal) {
  struct sigaction present {};
  ::sigaction(signal, nullptr, &present);
  return present.sa_handler == SIG_IGN;
}

}  // namespace

void endWithStatusOnInterrupt() {
  ::signal(SIGINT, farewell);
  if (!isIgnored(SIGHUP)) ::signal(SIGHUP, removeAndEnd);
  ::signal(SIGTERM, removeAndEnd);
}

void removeOnInterrupt(const char* file, const char* folder) {
  leftFile = file;
  leftFolder = folder;
}

}  // namespace halvo
