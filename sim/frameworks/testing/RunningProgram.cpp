#include "sim/frameworks/testing/RunningProgram.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace halvo::sim {
namespace {

std::array<int, 2> makePipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe2");
  return ends;
}

// Async-signal-safe calls only: the test process may have threads.
[[noreturn]] void becomeProgram(const char* program, int input, std::optional<uid_t> user) {
  ::dup2(input, STDIN_FILENO);
  ::dup2(::open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
  const bool ready = !user || (::setresgid(*user, *user, *user) == 0 && ::setresuid(*user, *user, *user) == 0);
  if (ready) ::execl(program, program, nullptr);
  ::_exit(127);
}

}  // namespace

void makeWaitingProgram(const std::filesystem::path& place, const std::optional<CodeSignature>& signature) {
  std::filesystem::copy_file("/bin/cat", place);
  if (signature && !signExecutable(place, *signature)) {
    throw std::system_error(errno, std::generic_category(), place.string());
  }
}

RunningProgram::RunningProgram(const std::filesystem::path& program, std::optional<uid_t> user) {
  const auto input = makePipe();
  // Closes when the child's program starts, which tells this side that it did.
  const auto started = makePipe();
  pid_ = ::fork();
  if (pid_ == 0) becomeProgram(program.c_str(), input[0], user);
  ::close(started[1]);
  ::close(input[0]);
  input_ = input[1];
  char nothing = 0;
  static_cast<void>(::read(started[0], &nothing, 1) == 0);
  ::close(started[0]);
}

RunningProgram::~RunningProgram() { end(); }

void RunningProgram::end() {
  if (input_ < 0) return;
  ::close(input_);
  input_ = -1;
  ::waitpid(pid_, nullptr, 0);
}

}  // namespace halvo::sim
