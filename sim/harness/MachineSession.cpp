#include "sim/harness/MachineSession.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <stdexcept>
#include <thread>
#include <utility>

#include "sim/support/Files.h"
#include "sim/support/WaitUntil.h"

namespace halvo::sim {
namespace {

// A machine that is told to end takes milliseconds; the rest is for jobs that ignore it and for busy hosts.
constexpr std::chrono::seconds kShutdownBound(30);

// Says that the machine has booted, and then lives until its input ends, and the machine with it.
constexpr const char* kSessionCommand = "echo; exec cat";

constexpr uid_t kFirstOrdinaryUser = 501;

pid_t startMachine(const std::filesystem::path& machine, const std::filesystem::path& errors, int input, int output) {
  const UniqueDescriptor err(::open(errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
  const auto child = startChild({HALVO_SIM_PROGRAM, "run", machine.string(), "--", "/bin/sh", "-c", kSessionCommand},
                                {input, output, err.get()});
  if (!child) throw std::runtime_error("halvo-sim cannot be run");
  return *child;
}

bool hasEnded(pid_t process) { return ::waitpid(process, nullptr, WNOHANG) == process; }

void collect(pid_t process) {
  if (waitUntil([&] { return hasEnded(process); }, kShutdownBound)) return;
  ::kill(process, SIGKILL);
  ::waitpid(process, nullptr, 0);
}

// False when the machine ends instead.
bool hasBooted(const UniqueDescriptor& output) {
  char word = 0;
  ssize_t count = 0;
  do count = ::read(output.get(), &word, 1);
  while (count < 0 && errno == EINTR);
  return count == 1;
}

CommandResult runAndWait(const ControlClient& launchd, uid_t user, const std::vector<std::string>& argv,
                         const std::string& input) {
  const UniqueDescriptor in = namelessFile(input);
  const UniqueDescriptor out = namelessFile();
  const UniqueDescriptor err = namelessFile();
  const auto status = launchd.run(user, argv, {in.get(), out.get(), err.get()});
  if (!status) return {.status = -1, .out = {}, .err = "the machine stopped"};
  return {.status = *status, .out = contentOf(out), .err = contentOf(err)};
}

}  // namespace

MachineSession::MachineSession(const std::filesystem::path& machine, const std::filesystem::path& errors)
    : launchd_(machine / "sim/launchd.sock") {
  Pipe input = makePipe();
  Pipe output = makePipe();
  process_ = startMachine(machine, errors, input.out.get(), output.in.get());
  output.in.close();
  keepsRunning_ = std::move(input.in);
  if (!hasBooted(output.out)) {
    shutDown();
    throw std::runtime_error("the simulated Mac does not start: " + wholeFile(errors));
  }
  severalUsers_ = runAndWait(launchd_, kFirstOrdinaryUser, {"/usr/bin/true"}, {}).status != kNoSuchUser;
}

MachineSession::~MachineSession() { shutDown(); }

std::future<CommandResult> MachineSession::run(uid_t user, const std::vector<std::string>& argv,
                                               const std::string& input) const {
  std::promise<CommandResult> promise;
  auto future = promise.get_future();
  // Nobody has to wait for the thread: its connection to launchd ends with the machine at the latest.
  std::thread([promise = std::move(promise), launchd = launchd_, user, argv, input]() mutable {
    promise.set_value(runAndWait(launchd, user, argv, input));
  }).detach();
  return future;
}

void MachineSession::shutDown() {
  keepsRunning_.close();
  collect(process_);
}

}  // namespace halvo::sim
