#include "sim/harness/Machine.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <system_error>

#include "sim/harness/MachineSession.h"
#include "sim/launchd/JobState.h"
#include "sim/support/ChildProcess.h"
#include "sim/support/Files.h"

namespace halvo::sim {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ToolCall, time, tool, arguments, status, began, ended)

namespace {

ToolCall parseCall(const std::string& line) try {
  return nlohmann::json::parse(line).get<ToolCall>();
} catch (const nlohmann::json::exception&) {
  throw std::runtime_error("calls.jsonl has a line that is no call: " + line);
}

constexpr int kMostLinks = 40;

std::deque<std::string> partsOf(const std::filesystem::path& path) {
  std::deque<std::string> parts;
  for (const auto& part : path.relative_path()) {
    if (!part.empty() && part != ".") parts.push_back(part.string());
  }
  return parts;
}

enum class LastPart { kept, followed };

// Where a path of the machine lies on the host. Links on the way are resolved as inside the machine, where "/" is its
// folder; so is a link at the very end if asked for. What does not exist is appended as it is. Never leaves the
// machine.
std::filesystem::path hostPath(const std::filesystem::path& root, std::string_view inside, LastPart lastPart) {
  std::deque<std::string> left = partsOf(inside);
  std::filesystem::path reached;  // below the root
  int links = 0;
  while (!left.empty()) {
    const std::string part = left.front();
    left.pop_front();
    if (part == "..") {
      reached = reached.parent_path();
      continue;
    }
    std::error_code error;
    const auto target = std::filesystem::read_symlink(root / reached / part, error);
    if (error || (left.empty() && lastPart == LastPart::kept) || ++links > kMostLinks) {
      reached /= part;
      continue;
    }
    if (target.is_absolute()) reached.clear();
    const auto parts = partsOf(target);
    left.insert(left.begin(), parts.begin(), parts.end());
  }
  return root / reached;
}

constexpr std::chrono::minutes kCommandBound(1);
constexpr unsigned kStateMode = 0666;

void put(const std::filesystem::path& file, std::string_view content, unsigned mode) {
  std::filesystem::create_directories(file.parent_path());
  if (!replaceFile(file, content, mode)) throw std::runtime_error(file.string() + " cannot be written");
}

void buildFreshMachine(const std::filesystem::path& root) {
  const CommandResult result = runChild({HALVO_SIM_PROGRAM, "new", root.string()});
  if (result.status != 0) throw std::runtime_error("the simulated Mac cannot be built: " + result.err);
}

}  // namespace

std::vector<ToolCall> parseToolCalls(std::string_view text) {
  std::vector<ToolCall> calls;
  for (const std::string& line : splitLines(text.substr(0, text.rfind('\n') + 1))) calls.push_back(parseCall(line));
  return calls;
}

std::vector<std::string> splitLines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

Machine::Machine() : root_(folder_.path() / "mac") { buildFreshMachine(root_); }

Machine::~Machine() = default;

void Machine::start() {
  if (!session_) session_ = std::make_unique<MachineSession>(root_, folder_.path() / "errors");
}

void Machine::stop() { session_.reset(); }

bool Machine::supportsSeveralUsers() const { return session().severalUsers(); }

CommandResult Machine::run(unsigned user, const std::vector<std::string>& argv, const std::string& input) {
  auto result = runAsync(user, argv, input);
  if (result.wait_for(kCommandBound) != std::future_status::ready) {
    throw std::runtime_error(argv.at(0) + " has not ended within a minute");
  }
  return result.get();
}

std::future<CommandResult> Machine::runAsync(unsigned user, const std::vector<std::string>& argv,
                                             const std::string& input) {
  return session().run(user, argv, input);
}

std::filesystem::path Machine::path(std::string_view inside) const { return hostPath(root_, inside, LastPart::kept); }

std::string Machine::readFile(std::string_view inside) const {
  return wholeFile(hostPath(root_, inside, LastPart::followed));
}

void Machine::writeFile(std::string_view inside, std::string_view content, unsigned mode) {
  put(hostPath(root_, inside, LastPart::followed), content, mode);
}

void Machine::writeState(const std::string& name, std::string_view text) {
  put(root_ / "sim" / name, text, kStateMode);
}

std::string Machine::readState(const std::string& name) const { return wholeFile(root_ / "sim" / name); }

std::vector<ToolCall> Machine::calls() const { return parseToolCalls(readState("calls.jsonl")); }

std::vector<JobState> Machine::jobs() const {
  const auto jobs = jobStatesFromJSON(readState("jobs.json"));
  if (!jobs) throw std::runtime_error("jobs.json cannot be read: the machine has never run");
  return *jobs;
}

std::vector<std::string> Machine::systemLog() const { return splitLines(readFile("/var/log/system.log")); }

TreeSnapshot Machine::snapshotTree(const std::vector<std::string>& paths) const {
  TreeSnapshot snapshot;
  for (const std::string& inside : paths) addToSnapshot(snapshot, path(inside), inside);
  return snapshot;
}

MachineSession& Machine::session() const {
  if (!session_) throw std::runtime_error("the simulated Mac is not running; start() it first");
  return *session_;
}

}  // namespace halvo::sim
