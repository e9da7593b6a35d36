#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <new>
#include <string>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "platform/SystemLog.h"
#include "platform/SystemUptime.h"
#include "sim/support/MachinePaths.h"
#include "sim/support/SimClock.h"

namespace halvo {
namespace {

// Text comes from clients too: whatever could end the line or move a terminal's cursor is written as its octal code, so
// that nobody forges an entry.
void appendVisibly(std::string& entry, std::string_view text) {
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7F) {
      entry += c;
      continue;
    }
    std::array<char, 5> code{};
    std::snprintf(code.data(), code.size(), "\\%03o", static_cast<unsigned>(byte));
    entry += code.data();
  }
}

std::string entryFor(std::string_view line) {
  std::string entry = sim::universalTime("%Y-%m-%d %H:%M:%S");
  entry.append(" ").append(program_invocation_short_name).append("[").append(std::to_string(::getpid())).append("]: ");
  appendVisibly(entry, line);
  entry += '\n';
  return entry;
}

// Keeps SIGPIPE from this thread: a log line that nobody reads any more must not end the process.
class NoBrokenPipe {
 public:
  NoBrokenPipe() {
    sigset_t pending;
    ::sigpending(&pending);
    wasPending_ = ::sigismember(&pending, SIGPIPE) == 1;
    ::sigemptyset(&pipe_);
    ::sigaddset(&pipe_, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
  }
  NoBrokenPipe(const NoBrokenPipe&) = delete;
  NoBrokenPipe& operator=(const NoBrokenPipe&) = delete;
  ~NoBrokenPipe() {
    const timespec noWait{};
    // Takes back only the signal that was raised meanwhile.
    if (!wasPending_) ::sigtimedwait(&pipe_, nullptr, &noWait);
    ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }

 private:
  sigset_t pipe_{};
  sigset_t before_{};
  bool wasPending_ = false;
};

// One write: lines of several threads and processes stay whole.
void writeWhole(int descriptor, const std::string& entry) {
  static_cast<void>(::write(descriptor, entry.data(), entry.size()) < 0);
}

bool isStream(int descriptor) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) return false;
  return S_ISCHR(status.st_mode) || S_ISREG(status.st_mode) || S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode);
}

}  // namespace

void halvoSystemLog(std::string_view line) {
  // The platform drops empty messages.
  if (line.empty()) return;
  try {
    const std::string entry = entryFor(line);
    // Opened for each entry, so that the log can be moved away while the process runs.
    const UniqueDescriptor file(
        ::open(sim::machinePaths().systemLog.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644));
    if (file.valid()) writeWhole(file.get(), entry);
    if (!isStream(STDERR_FILENO)) return;
    const NoBrokenPipe guard;
    writeWhole(STDERR_FILENO, entry);
  } catch (const std::bad_alloc&) {
    // No memory, no line.
  }
}

double halvoSystemUptime() { return sim::uptimeSeconds(); }

}  // namespace halvo
