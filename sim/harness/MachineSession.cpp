#include "sim/harness/MachineSession.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "sim/harness/AgentMessages.h"
#include "sim/harness/WaitUntil.h"

extern char** environ;

namespace halvo::sim {
namespace {

// A machine that is told to end takes milliseconds; the rest is for jobs that ignore it and for busy hosts.
constexpr std::chrono::seconds kShutdownBound(30);

struct Channel {
  UniqueDescriptor here;
  UniqueDescriptor there;
};

Channel makeChannel() {
  std::array<int, 2> ends{};
  // No other machine that this process starts may hold an end: this one would not notice the end of its input.
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    throw std::runtime_error("no channel to the machine can be made");
  }
  return {UniqueDescriptor(ends[0]), UniqueDescriptor(ends[1])};
}

pid_t startMachine(const std::filesystem::path& machine, const std::filesystem::path& errors, int input, int output) {
  std::vector<std::string> words = {HALVO_SIM_PROGRAM, "run", machine.string(), "--", "/usr/libexec/sim-agent"};
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions{};
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  pid_t child = 0;
  const int error = ::posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::runtime_error("halvo-sim cannot be run");
  return child;
}

bool hasEnded(pid_t process) { return ::waitpid(process, nullptr, WNOHANG) == process; }

void collect(pid_t process) {
  if (waitUntil([&] { return hasEnded(process); }, kShutdownBound)) return;
  ::kill(process, SIGKILL);
  ::waitpid(process, nullptr, 0);
}

std::string contentOf(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The next line, without its end; nothing at the end of the input.
std::optional<std::string> readLine(int input, std::string& received) {
  std::array<char, 65536> chunk{};
  std::size_t end = 0;
  while ((end = received.find('\n')) == std::string::npos) {
    const ssize_t count = ::read(input, chunk.data(), chunk.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return std::nullopt;
    received.append(chunk.data(), static_cast<std::size_t>(count));
  }
  std::string line = received.substr(0, end);
  received.erase(0, end + 1);
  return line;
}

// Whoever waits for the answer to a line that does not arrive is told when the machine's answers end.
void sendLine(int output, std::string_view line) {
  while (!line.empty()) {
    // A machine that ends while a command is on its way to it must not end this process.
    const ssize_t count = ::send(output, line.data(), line.size(), MSG_NOSIGNAL);
    if (count < 0 && errno != EINTR) return;
    if (count > 0) line.remove_prefix(static_cast<std::size_t>(count));
  }
}

CommandResult machineStopped() { return {.status = -1, .out = {}, .err = "the machine stopped"}; }

}  // namespace

MachineSession::MachineSession(const std::filesystem::path& machine, const std::filesystem::path& errors) {
  Channel input = makeChannel();
  Channel output = makeChannel();
  process_ = startMachine(machine, errors, input.there.get(), output.there.get());
  output.there.close();
  toAgent_ = std::move(input.here);
  fromAgent_ = std::move(output.here);
  const auto line = readLine(fromAgent_.get(), received_);
  const auto greeting = line ? greetingFromLine(*line) : std::nullopt;
  if (!greeting) {
    toAgent_.close();
    collect(process_);
    throw std::runtime_error("the simulated Mac does not start: " + contentOf(errors));
  }
  severalUsers_ = greeting->severalUsers;
  reader_ = std::thread([this] { readReplies(); });
}

MachineSession::~MachineSession() {
  {
    const std::lock_guard lock(sending_);
    toAgent_.close();
  }
  collect(process_);
  reader_.join();
}

std::future<CommandResult> MachineSession::run(uid_t user, const std::vector<std::string>& argv,
                                               const std::string& input) {
  const std::lock_guard sending(sending_);
  auto [id, future] = expectReply();
  sendLine(toAgent_.get(), toLine(AgentRequest{.id = id, .user = user, .argv = argv, .input = input}));
  return std::move(future);
}

std::pair<std::int64_t, std::future<CommandResult>> MachineSession::expectReply() {
  const std::lock_guard lock(mutex_);
  const std::int64_t id = nextId_++;
  std::promise<CommandResult> promise;
  auto future = promise.get_future();
  if (over_) {
    promise.set_value(machineStopped());
  } else {
    waiting_.emplace(id, std::move(promise));
  }
  return {id, std::move(future)};
}

void MachineSession::readReplies() {
  while (const auto line = readLine(fromAgent_.get(), received_)) deliver(*line);
  failWaiting();
}

void MachineSession::deliver(const std::string& line) {
  auto reply = agentReplyFromLine(line);
  if (!reply) return;
  const std::lock_guard lock(mutex_);
  const auto found = waiting_.find(reply->id);
  if (found == waiting_.end()) return;
  found->second.set_value({reply->status, std::move(reply->out), std::move(reply->err)});
  waiting_.erase(found);
}

void MachineSession::failWaiting() {
  const std::lock_guard lock(mutex_);
  over_ = true;
  for (auto& [id, promise] : waiting_) promise.set_value(machineStopped());
  waiting_.clear();
}

}  // namespace halvo::sim
