#include "HalvoHelper/testing/SignedProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <string>

#include "sim/support/Processes.h"

namespace halvo {
namespace {

void require(bool done, const char* what) {
  if (!done) throw std::runtime_error(what);
}

// Starts `program` with `input` as its standard input and nothing else to do.
pid_t start(const std::string& program, int input) {
  posix_spawn_file_actions_t actions;
  require(posix_spawn_file_actions_init(&actions) == 0, "no file actions");
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  std::string name = "client";
  std::array<char*, 2> arguments = {name.data(), nullptr};
  std::array<char*, 1> environment = {nullptr};
  pid_t pid = -1;
  const int error = posix_spawn(&pid, program.c_str(), &actions, nullptr, arguments.data(), environment.data());
  posix_spawn_file_actions_destroy(&actions);
  require(error == 0, "the client could not be started");
  return pid;
}

}  // namespace

SignedProcess::SignedProcess(const std::optional<sim::CodeSignature>& signature) {
  std::filesystem::copy_file("/bin/cat", program());
  if (signature) require(sim::signExecutable(program(), *signature), "the client could not be signed");

  std::array<int, 2> pipe{};
  require(::pipe2(pipe.data(), O_CLOEXEC) == 0, "no pipe");
  pid_ = start(program().string(), pipe[0]);
  ::close(pipe[0]);
  input_ = pipe[1];
  token_.val[1] = token_.val[3] = ::getuid();
  token_.val[2] = token_.val[4] = ::getgid();
  token_.val[5] = static_cast<unsigned int>(pid_);
  token_.val[7] = sim::processVersion(pid_).value();
}

SignedProcess::~SignedProcess() { end(); }

void SignedProcess::end() {
  if (pid_ < 0) return;
  ::close(input_);
  ::waitpid(pid_, nullptr, 0);
  pid_ = -1;
}

}  // namespace halvo
