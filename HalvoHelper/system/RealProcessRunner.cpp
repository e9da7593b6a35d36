#include "HalvoHelper/system/RealProcessRunner.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "HalvoHelper/text/Text.h"

extern char** environ;

namespace halvo {
namespace {

struct Pipe {
  UniqueDescriptor readEnd;
  UniqueDescriptor writeEnd;
};

// A duplicate of `descriptor` with a number above the standard ones, or nothing.
UniqueDescriptor aboveStandard(int descriptor) {
  return UniqueDescriptor(::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

// Answers an errno value, 0 on success. A process that was started without its standard descriptors gets their numbers
// from pipe(2). Such an end cannot be handed on: duplicated onto itself it stays close-on-exec on macOS.
int makePipe(Pipe& pipe) {
  // macOS has no pipe2(2). A child that another thread starts in between does not get the ends all the same, since
  // every spawn here closes what it does not name.
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) != 0) return errno;
  const UniqueDescriptor readEnd(ends[0]);
  const UniqueDescriptor writeEnd(ends[1]);
  pipe.readEnd = aboveStandard(ends[0]);
  if (!pipe.readEnd.valid()) return errno;
  pipe.writeEnd = aboveStandard(ends[1]);
  return pipe.writeEnd.valid() ? 0 : errno;
}

// What the helper was started with came through an exec and is not close-on-exec, unlike everything that it opens
// itself, which may have got the number of a standard input that was closed.
bool standardInputIsInherited() { return ::fcntl(STDIN_FILENO, F_GETFD) == 0; }

class SpawnAttributes {
 public:
  SpawnAttributes() : status_(::posix_spawnattr_init(&attributes_)) {
    if (status_ != 0) return;
    initialised_ = true;
    sigset_t none{};
    sigset_t all{};
    sigemptyset(&none);
    sigfillset(&all);
    sigdelset(&all, SIGKILL);
    sigdelset(&all, SIGSTOP);
    // Requests run on worker threads, which block almost every signal: a tool that inherited that mask could not be
    // terminated. Its own process group keeps launchctl alive when launchd ends the helper it was asked to boot out.
    keepFirst(::posix_spawnattr_setsigmask(&attributes_, &none));
    keepFirst(::posix_spawnattr_setsigdefault(&attributes_, &all));
    keepFirst(::posix_spawnattr_setpgroup(&attributes_, 0));
    keepFirst(::posix_spawnattr_setflags(&attributes_, kFlags));
  }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;
  ~SpawnAttributes() {
    if (initialised_) ::posix_spawnattr_destroy(&attributes_);
  }

  [[nodiscard]] int status() const { return status_; }
  [[nodiscard]] const posix_spawnattr_t* get() const { return &attributes_; }

 private:
  static constexpr short kFlags =
      POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_CLOEXEC_DEFAULT;

  void keepFirst(int status) {
    if (status_ == 0) status_ = status;
  }

  posix_spawnattr_t attributes_{};
  int status_ = 0;
  bool initialised_ = false;
};

class SpawnDescriptors {
 public:
  // Both output streams go into `output`, so that they arrive in the order in which the tool wrote them.
  explicit SpawnDescriptors(int output) : status_(::posix_spawn_file_actions_init(&actions_)) {
    if (status_ != 0) return;
    initialised_ = true;
    keepFirst(standardInputIsInherited()
                  ? ::posix_spawn_file_actions_addinherit_np(&actions_, STDIN_FILENO)
                  : ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0));
    keepFirst(::posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO));
    keepFirst(::posix_spawn_file_actions_adddup2(&actions_, output, STDERR_FILENO));
  }
  SpawnDescriptors(const SpawnDescriptors&) = delete;
  SpawnDescriptors& operator=(const SpawnDescriptors&) = delete;
  ~SpawnDescriptors() {
    if (initialised_) ::posix_spawn_file_actions_destroy(&actions_);
  }

  [[nodiscard]] int status() const { return status_; }
  [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  void keepFirst(int status) {
    if (status_ == 0) status_ = status;
  }

  posix_spawn_file_actions_t actions_{};
  int status_ = 0;
  bool initialised_ = false;
};

ProcessResult spawnFailed(int error) {
  return {.code = -1, .output = "spawn failed: " + std::generic_category().message(error)};
}

// Starts the tool; answers an errno value, 0 when `child` runs.
int spawn(const std::string& tool, const std::vector<std::string>& arguments, int output, pid_t& child) {
  const SpawnAttributes attributes;
  if (attributes.status() != 0) return attributes.status();
  const SpawnDescriptors descriptors(output);
  if (descriptors.status() != 0) return descriptors.status();

  // The interface takes non-const strings for historical reasons and does not write to them.
  std::vector<char*> argv;
  argv.reserve(arguments.size() + 2);
  argv.push_back(const_cast<char*>(tool.c_str()));
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  return ::posix_spawn(&child, tool.c_str(), descriptors.get(), attributes.get(), argv.data(), environ);
}

// Four times the room when there is too little. What a tool prints comes to any length, and what is reserved and never
// touched costs nothing, while each copy on the way touches as much new memory as the text has.
void makeRoom(std::string& text, std::size_t count) {
  constexpr std::size_t kGrowth = 4;
  if (text.capacity() - text.size() < count) text.reserve(std::max(text.size() + count, kGrowth * text.capacity()));
}

// Everything up to the end of file, or nothing when that is not UTF-8. Nothing when reading fails either: half a report
// is not a report.
std::string readTextToEnd(int descriptor) {
  using Chunk = std::array<char, 65'536>;
  const auto chunk = std::make_unique_for_overwrite<Chunk>();
  std::string text;
  std::size_t checked = 0;
  while (true) {
    const ssize_t count = ::read(descriptor, chunk->data(), chunk->size());
    if (count == 0) break;
    if (count > 0) {
      makeRoom(text, static_cast<std::size_t>(count));
      text.append(chunk->data(), static_cast<std::size_t>(count));
      // While the tool goes on writing. What begins in one piece and ends in the next is looked at again then.
      checked += halvoLeadingUTF8(std::string_view(text).substr(checked));
    } else if (errno != EINTR) {
      return {};
    }
  }
  if (checked < text.size()) text.clear();
  return text;
}

std::int32_t waitForExit(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

ProcessResult RealProcessRunner::run(const std::string& tool, const std::vector<std::string>& arguments) const {
  Pipe pipe;
  const int pipeError = makePipe(pipe);
  if (pipeError != 0) return spawnFailed(pipeError);
  pid_t child = 0;
  const int error = spawn(tool, arguments, pipe.writeEnd.get(), child);
  if (error != 0) return spawnFailed(error);
  pipe.writeEnd.close();

  // Read to end of file before waiting: a child that fills the pipe would never exit. Nor would one whose output cannot
  // be read, were the pipe not closed then.
  std::string output = readTextToEnd(pipe.readEnd.get());
  pipe.readEnd.close();
  const std::int32_t code = waitForExit(child);
  return {.code = code, .output = std::move(output)};
}

}  // namespace halvo
