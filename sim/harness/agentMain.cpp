// The harness's hand inside the machine: runs each command that it reads on standard input, all at the same time, and
// answers on standard output. Ends, with everything it has started, at the end of its input.
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/harness/AgentChild.h"
#include "sim/harness/AgentMessages.h"
#include "sim/launchd/UserSwitch.h"

namespace {

using namespace halvo::sim;

constexpr uid_t kFirstOrdinaryUser = 501;
constexpr int kCannotStart = 71;

bool say(const std::string& line) {
  std::string_view left = line;
  while (!left.empty()) {
    const ssize_t count = ::write(STDOUT_FILENO, left.data(), left.size());
    if (count < 0 && errno != EINTR) return false;
    if (count > 0) left.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

class Agent {
 public:
  Agent() {
    sigset_t ended{};
    sigemptyset(&ended);
    sigaddset(&ended, SIGCHLD);
    ::sigprocmask(SIG_BLOCK, &ended, nullptr);
    signals_ = halvo::UniqueDescriptor(::signalfd(-1, &ended, SFD_CLOEXEC | SFD_NONBLOCK));
  }

  void serve() {
    say(toLine(AgentGreeting{.severalUsers = userExists(kFirstOrdinaryUser)}));
    do {
      std::array<pollfd, 2> entries = {{{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0},
                                        {.fd = signals_.get(), .events = POLLIN, .revents = 0}}};
      ::poll(entries.data(), entries.size(), -1);
      collect();
      inputIsReady_ = entries[0].revents != 0;
    } while (!inputIsReady_ || readRequests());
    for (const auto& [process, child] : children_) ::kill(-process, SIGKILL);
  }

 private:
  // False at the end of the input.
  bool readRequests() {
    std::array<char, 65536> chunk{};
    const ssize_t count = ::read(STDIN_FILENO, chunk.data(), chunk.size());
    if (count < 0) return errno == EINTR;
    if (count == 0) return false;
    received_.append(chunk.data(), static_cast<std::size_t>(count));
    std::size_t end = 0;
    while ((end = received_.find('\n')) != std::string::npos) {
      begin(received_.substr(0, end));
      received_.erase(0, end + 1);
    }
    return true;
  }

  void begin(const std::string& line) {
    const auto request = agentRequestFromLine(line);
    if (!request) return;
    auto child = AgentChild::start(*request);
    if (child) {
      children_.emplace(child->process(), std::move(*child));
    } else {
      say(toLine(AgentReply{request->id, kCannotStart, {}, std::generic_category().message(errno)}));
    }
  }

  void collect() {
    signalfd_siginfo unused{};
    while (::read(signals_.get(), &unused, sizeof unused) > 0) {
    }
    int status = 0;
    pid_t process = 0;
    while ((process = ::waitpid(-1, &status, WNOHANG)) > 0) {
      const auto child = children_.find(process);
      if (child == children_.end()) continue;
      say(toLine(child->second.reply(status)));
      children_.erase(child);
    }
  }

  halvo::UniqueDescriptor signals_;
  std::map<pid_t, AgentChild> children_;
  std::string received_;
  bool inputIsReady_ = false;
};

}  // namespace

int main() {
  // Whoever reads the answers may go first.
  ::signal(SIGPIPE, SIG_IGN);
  Agent().serve();
}
