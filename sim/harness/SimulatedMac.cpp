#include "sim/harness/SimulatedMac.h"

#include <chrono>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "sim/harness/InsidePath.h"
#include "sim/harness/MachineSession.h"
#include "sim/launchd/JobState.h"
#include "sim/machine/HostProcess.h"

namespace halvo::sim {
namespace {

constexpr std::chrono::minutes kCommandBound(1);
constexpr unsigned kStateMode = 0666;

std::string contentOf(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void put(const std::filesystem::path& file, std::string_view content, unsigned mode) {
  std::filesystem::create_directories(file.parent_path());
  // Whoever reads the file meanwhile sees all of the old or all of the new content.
  const std::filesystem::path fresh = file.string() + ".new";
  std::ofstream out(fresh, std::ios::binary | std::ios::trunc);
  out << content;
  out.close();
  if (!out) throw std::runtime_error(file.string() + " cannot be written");
  std::filesystem::permissions(fresh, std::filesystem::perms(mode));
  std::filesystem::rename(fresh, file);
}

void buildFreshMachine(const std::filesystem::path& root) {
  const HostResult result = runOnHost({HALVO_SIM_PROGRAM, "new", root.string()});
  if (result.status != 0) throw std::runtime_error("the simulated Mac cannot be built: " + result.err);
}

}  // namespace

SimulatedMac::SimulatedMac() : root_(folder_.path() / "mac") { buildFreshMachine(root_); }

SimulatedMac::~SimulatedMac() = default;

void SimulatedMac::start() {
  if (!session_) session_ = std::make_unique<MachineSession>(root_, folder_.path() / "errors");
}

void SimulatedMac::stop() { session_.reset(); }

bool SimulatedMac::running() const { return session_ != nullptr; }

bool SimulatedMac::supportsSeveralUsers() const { return session().severalUsers(); }

CommandResult SimulatedMac::run(unsigned user, const std::vector<std::string>& argv, const std::string& input) {
  auto result = runAsync(user, argv, input);
  if (result.wait_for(kCommandBound) != std::future_status::ready) {
    throw std::runtime_error(argv.at(0) + " has not ended within a minute");
  }
  return result.get();
}

std::future<CommandResult> SimulatedMac::runAsync(unsigned user, const std::vector<std::string>& argv,
                                                  const std::string& input) {
  return session().run(user, argv, input);
}

std::filesystem::path SimulatedMac::path(std::string_view inside) const {
  return hostPath(root_, inside, LastPart::kept);
}

std::string SimulatedMac::readFile(std::string_view inside) const {
  return contentOf(hostPath(root_, inside, LastPart::followed));
}

void SimulatedMac::writeFile(std::string_view inside, std::string_view content, unsigned mode) {
  put(hostPath(root_, inside, LastPart::followed), content, mode);
}

void SimulatedMac::writeState(const std::string& name, std::string_view text) {
  put(root_ / "sim" / name, text, kStateMode);
}

std::string SimulatedMac::readState(const std::string& name) const { return contentOf(root_ / "sim" / name); }

std::vector<ToolCall> SimulatedMac::calls() const { return parseToolCalls(readState("calls.jsonl")); }

std::vector<JobState> SimulatedMac::jobs() const {
  const auto jobs = jobStatesFromJSON(readState("jobs.json"));
  if (!jobs) throw std::runtime_error("jobs.json cannot be read: the machine has never run");
  return *jobs;
}

std::vector<std::string> SimulatedMac::systemLog() const { return splitLines(readFile("/var/log/system.log")); }

TreeSnapshot SimulatedMac::snapshotTree(const std::vector<std::string>& paths) const {
  TreeSnapshot snapshot;
  for (const std::string& inside : paths) addToSnapshot(snapshot, path(inside), inside);
  return snapshot;
}

MachineSession& SimulatedMac::session() const {
  if (!session_) throw std::runtime_error("the simulated Mac is not running; start() it first");
  return *session_;
}

}  // namespace halvo::sim
