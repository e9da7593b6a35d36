#include "sim/harness/AgentChild.h"

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <string>
#include <system_error>
#include <vector>

#include "sim/launchd/SessionCommand.h"
#include "sim/launchd/UserSwitch.h"

namespace halvo::sim {
namespace {

constexpr int kSignalBase = 128;
constexpr int kNoSuchUser = 126;
constexpr int kNoSuchProgram = 127;

UniqueDescriptor namelessFile(const std::string& content) {
  UniqueDescriptor file(::memfd_create("stream", MFD_CLOEXEC));
  std::size_t written = 0;
  while (file.valid() && written < content.size()) {
    const ssize_t count = ::write(file.get(), content.data() + written, content.size() - written);
    if (count < 0 && errno != EINTR) return {};
    if (count > 0) written += static_cast<std::size_t>(count);
  }
  if (file.valid()) ::lseek(file.get(), 0, SEEK_SET);
  return file;
}

std::string contentOf(int file) {
  std::string text;
  std::array<char, 4096> chunk{};
  ssize_t count = 0;
  while ((count = ::pread(file, chunk.data(), chunk.size(), static_cast<off_t>(text.size()))) > 0) {
    text.append(chunk.data(), static_cast<std::size_t>(count));
  }
  return text;
}

std::vector<char*> pointers(std::vector<std::string>& words) {
  std::vector<char*> list;
  for (std::string& word : words) list.push_back(word.data());
  list.push_back(nullptr);
  return list;
}

[[noreturn]] void giveUp(int status, const std::string& why) {
  const std::string line = why + "\n";
  [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
  ::_exit(status);
}

// Only in the child, which has its standard streams already.
[[noreturn]] void becomeProgram(const AgentRequest& request) {
  ::setpgid(0, 0);
  std::vector<std::string> environment = userEnvironment(request.user);
  std::vector<std::string> arguments = request.argv;
  if (!userExists(request.user) || becomeUser(request.user) != 0) {
    giveUp(kNoSuchUser, "this machine has no account with the uid " + std::to_string(request.user));
  }
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  sigset_t none{};
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  ::signal(SIGPIPE, SIG_DFL);
  ::execve(arguments[0].c_str(), pointers(arguments).data(), pointers(environment).data());
  giveUp(kNoSuchProgram, arguments[0] + ": " + std::generic_category().message(errno));
}

}  // namespace

std::optional<AgentChild> AgentChild::start(const AgentRequest& request) {
  AgentChild command;
  const UniqueDescriptor in = namelessFile(request.input);
  command.id_ = request.id;
  command.out_ = namelessFile({});
  command.err_ = namelessFile({});
  if (!in.valid() || !command.out_.valid() || !command.err_.valid()) return std::nullopt;
  command.process_ = ::fork();
  if (command.process_ < 0) return std::nullopt;
  if (command.process_ > 0) return command;
  ::dup2(in.get(), STDIN_FILENO);
  ::dup2(command.out_.get(), STDOUT_FILENO);
  ::dup2(command.err_.get(), STDERR_FILENO);
  ::close_range(STDERR_FILENO + 1, ~0U, 0);
  becomeProgram(request);
}

AgentReply AgentChild::reply(int waitStatus) const {
  return {.id = id_,
          .status = WIFSIGNALED(waitStatus) ? kSignalBase + WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus),
          .out = contentOf(out_.get()),
          .err = contentOf(err_.get())};
}

}  // namespace halvo::sim
