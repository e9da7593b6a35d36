#include "sim/launchd/testing/RunningLaunchd.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <stdexcept>
#include <utility>

#include "sim/support/ChildProcess.h"
#include "sim/support/Processes.h"
#include "sim/support/UnixSocket.h"

namespace halvo::sim {
RunningLaunchd::~RunningLaunchd() { stop(); }

void RunningLaunchd::start() {
  Pipe input = makePipe();
  Pipe output = makePipe();
  process_ = spawn({"/bin/cat"}, input.out.get(), output.in.get());
  output.in.close();
  toCommand_ = std::move(input.in);
  // The command starts when the jobs have been loaded: its echo says that the machine is up.
  char echo = 0;
  if (::write(toCommand_.get(), "x", 1) != 1 || ::read(output.out.get(), &echo, 1) != 1) {
    throw std::runtime_error("launchd did not start");
  }
}

int RunningLaunchd::stop() {
  if (process_ == 0) return 0;
  toCommand_.close();
  return collectChild(std::exchange(process_, 0));
}

int RunningLaunchd::end(int signal) {
  ::kill(process_, signal);
  return collectChild(std::exchange(process_, 0));
}

int RunningLaunchd::runSession(const std::vector<std::string>& command) const {
  return collectChild(spawn(command, STDIN_FILENO, STDOUT_FILENO));
}

pid_t RunningLaunchd::spawn(const std::vector<std::string>& command, int input, int output) const {
  std::filesystem::create_directories(root.path() / "sim");
  std::vector<std::string> words = {HALVO_SIM_LAUNCHD, "--session", root.path().string(), std::to_string(::geteuid())};
  words.insert(words.end(), command.begin(), command.end());
  const auto child = startChild(words, {input, output, STDERR_FILENO});
  if (!child) throw std::runtime_error("launchd cannot be run");
  return *child;
}

std::string RunningLaunchd::job(const std::string& folder, const std::string& label,
                                const std::vector<std::string>& arguments, const std::string& extra) const {
  std::string words = "<string>" HALVO_SIM_TEST_JOB "</string>";
  for (const std::string& argument : arguments) words += "<string>" + argument + "</string>";
  return root
      .write(folder + "/" + label + ".plist",
             "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>Label</key><string>" + label +
                 "</string><key>ProgramArguments</key><array>" + words + "</array>" + extra + "</dict></plist>")
      .string();
}

ControlClient RunningLaunchd::control() const { return ControlClient(root.path() / "sim/launchd.sock"); }

std::optional<JobState> RunningLaunchd::state(const std::string& domain, const std::string& label) const {
  const auto jobs = jobStatesFromJSON(root.read("sim/jobs.json"));
  if (!jobs) throw std::runtime_error("jobs.json is not readable");
  const auto found =
      std::ranges::find_if(*jobs, [&](const JobState& job) { return job.domain == domain && job.label == label; });
  return found == jobs->end() ? std::nullopt : std::optional(*found);
}

std::filesystem::path RunningLaunchd::service(const std::string& name) const {
  return root.path() / "var/run/mach" / name;
}

nlohmann::json RunningLaunchd::ask(const std::string& name, const std::string& word) const {
  const UniqueDescriptor socket = connectTo(service(name));
  if (!socket.valid() || ::send(socket.get(), word.data(), word.size(), MSG_NOSIGNAL) < 0) return nullptr;
  std::string text;
  std::array<char, 4096> chunk{};
  ssize_t count = 0;
  while ((count = ::recv(socket.get(), chunk.data(), chunk.size(), 0)) > 0) {
    text.append(chunk.data(), static_cast<std::size_t>(count));
  }
  return text.empty() ? nlohmann::json() : nlohmann::json::parse(text);
}

bool alive(pid_t process) {
  const auto facts = processFacts(process);
  return facts && facts->state != 'Z';
}

std::string publishing(const std::string& service) {
  return "<key>MachServices</key><dict><key>" + service + "</key><true/></dict>";
}

}  // namespace halvo::sim
