#include "tests/interleaving/Machine.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "HalvoHelper/system/ProductPaths.h"
#include "HalvoHelper/testing/SignatureReports.h"
#include "platform/SystemLog.h"
#include "tests/interleaving/Turns.h"

namespace halvo {

// Takes the place of the platform's log: a line is a boundary like any other call.
void halvoSystemLog(std::string_view) { interleaving::Turns::boundary(); }

namespace interleaving {
namespace {

constexpr const char* kStagingRoot = "/var/db/halvo/install-staging";
constexpr const char* kSnapshot = "/var/db/halvo/install-rollback/NOW";
constexpr std::array<const char*, 4> kParts = {kDriverBundlePath, kBrokerPath, kBrokerPlistPath, kDaemonPlistPath};

// Whether one of the two lies in the other, or they are the same.
bool overlap(const std::string& one, const std::string& other) {
  return one == other || one.starts_with(other + "/") || other.starts_with(one + "/");
}

// All runs of an execution fall into the same second, which must not depend on when the test runs.
std::string inOneSecond(const std::string& path) {
  const std::string root = "/var/db/halvo/install-rollback/";
  if (!path.starts_with(root)) return path;
  const auto end = std::find_if_not(path.begin() + static_cast<std::ptrdiff_t>(root.size()), path.end(),
                                    [](unsigned char c) { return std::isdigit(c) != 0; });
  const bool named = end != path.begin() + static_cast<std::ptrdiff_t>(root.size());
  return named ? kSnapshot + std::string(end, path.end()) : path;
}

// Answers and remembers that this was the answer.
bool told(bool answer) {
  Turns::told(answer ? "true" : "false");
  return answer;
}

}  // namespace

Machine::Machine(const std::string& appBundle, std::set<Rule> rules) : rules_(std::move(rules)) {
  for (const char* part : kParts) files.write(part, "installed before");
  files.write(kGoodPackage, "good");
  files.write(kFailingPackage, "good, but fails");
  files.write(kEvilPackage, "evil");
  files.write(appBundle + "/Contents/MacOS/halvo-app", "program");
}

Machine::Run& Machine::run() { return runs_[Turns::current().value()]; }

bool Machine::begin(const std::string& call) {
  if (!Turns::boundary()) return false;
  calls_.emplace_back(Turns::current().value(), call);
  run().begun = true;
  if (run().refused) breaks(Rule::authorized, "a refused request calls " + call);
  return true;
}

void Machine::breaks(Rule rule, const std::string& what) {
  if (rules_.contains(rule) && !violation_) violation_ = what;
}

void Machine::endRun() {
  if (Turns::current()) run().over = true;
}

void Machine::refuse() {
  if (Turns::current()) run().refused = true;
}

void Machine::endProcess() {
  const auto self = Turns::current();
  for (const auto& [number, run] : runs_) {
    if (number != *self && run.begun && !run.over) breaks(Rule::wholeRuns, "the process ends in the middle of a run");
  }
  ended_ = true;
}

void Machine::aboutToReplace(const std::string& path) {
  const auto self = Turns::current().value();
  for (const auto& [number, run] : runs_) {
    if (number == self || run.over) continue;
    if (run.staging && overlap(path, kStagingRoot)) breaks(Rule::staging, "another run's staging is removed");
    if (run.snapshot && overlap(path, kSnapshot)) breaks(Rule::snapshot, "another run's snapshot is removed");
  }
}

ProcessResult Machine::checkSignature(const std::string& package) {
  run().verified.reset();
  const auto found = files.files.find(package);
  if (found == files.files.end() || !found->second.starts_with("good")) return {.code = 1, .output = "no signature"};
  run().verified = found->second;
  return {.code = 0, .output = std::string(kGoodSignatureReport)};
}

ProcessResult Machine::install(const std::string& package) {
  breaks(Rule::noInstall, "the installer runs");
  const auto found = files.files.find(package);
  if (found == files.files.end()) return {.code = 1, .output = ""};
  const std::string bytes = found->second;
  if (run().verified != bytes) breaks(Rule::verifiedBytes, "unverified bytes reach the installer: " + bytes);
  const bool fails = bytes.ends_with("fails");
  files.write(kDriverBundlePath, bytes);
  files.write(kBrokerPath, bytes);
  // The rest takes a while, in which others may do something.
  if (!begin("installer goes on")) return {};
  if (fails) return {.code = 1, .output = ""};
  files.write(kBrokerPlistPath, bytes);
  files.write(kDaemonPlistPath, bytes);
  return {};
}

std::string Machine::state() const {
  std::string text;
  for (const auto& [path, contents] : files.files) text.append(path).append("=").append(contents).append("\n");
  for (const auto& path : files.directories) text.append(path).append("/\n");
  for (const auto& [number, run] : runs_) {
    text.append(std::to_string(number)).append(run.begun ? "b" : "").append(run.over ? "o" : "");
    text.append(run.refused ? "r" : "").append(run.staging ? "g" : "").append(run.snapshot ? "s" : "");
    text.append(run.verified.value_or("-")).append("\n");
  }
  return text;
}

bool WatchedFS::exists(const std::string& path) const {
  if (!machine_->begin("exists " + inOneSecond(path))) return false;
  return told(machine_->files.exists(inOneSecond(path)));
}

bool WatchedFS::remove(const std::string& path) const {
  if (!machine_->begin("remove " + path)) return false;
  machine_->aboutToReplace(path);
  return told(machine_->files.remove(path));
}

bool WatchedFS::removeTree(const std::string& path) const {
  if (!machine_->begin("removeTree " + inOneSecond(path))) return false;
  machine_->aboutToReplace(inOneSecond(path));
  if (path == kStagingRoot) machine_->removedStaging();
  return told(machine_->files.removeTree(inOneSecond(path)));
}

bool WatchedFS::copyTree(const std::string& source, const std::string& destination) const {
  const std::string from = inOneSecond(source);
  const std::string to = inOneSecond(destination);
  if (!machine_->begin("copyTree " + from + " -> " + to)) return false;
  machine_->aboutToReplace(to);
  return told(machine_->files.copyTree(from, to));
}

bool WatchedFS::stageFile(const std::string& source, const std::string& destination) const {
  if (!machine_->begin("stageFile " + source)) return false;
  return told(machine_->files.stageFile(source, destination));
}

bool WatchedFS::makeDir(const std::string& path) const {
  if (!machine_->begin("makeDir " + inOneSecond(path))) return false;
  machine_->madeSnapshot();
  return told(machine_->files.makeDir(inOneSecond(path)));
}

std::vector<std::string> WatchedFS::entries(const std::string& path) const {
  if (!machine_->begin("entries " + path)) return {};
  auto names = machine_->files.entries(path);
  for (const std::string& name : names) Turns::told(name);
  return names;
}

std::optional<std::int64_t> WatchedFS::modifiedDaysAgo(const std::string& path) const {
  if (!machine_->begin("modifiedDaysAgo " + path)) return std::nullopt;
  const auto days = machine_->files.modifiedDaysAgo(path);
  Turns::told(days ? std::to_string(*days) : "none");
  return days;
}

bool WatchedFS::makePrivateDir(const std::string& path, int mode) const {
  if (!machine_->begin("makePrivateDir " + path)) return false;
  const bool made = machine_->files.makePrivateDir(path, mode);
  if (made && path == kStagingRoot) machine_->madeStaging();
  return told(made);
}

ProcessResult WatchedTools::run(const std::string& tool, const std::vector<std::string>& arguments) const {
  std::string call = tool.substr(tool.rfind('/') + 1);
  for (const std::string& argument : arguments) call += " " + argument;
  if (!machine_->begin(call)) return {};

  ProcessResult result;
  if (arguments.front() == "--check-signature") result = machine_->checkSignature(arguments.at(1));
  if (arguments.front() == "-pkg") result = machine_->install(arguments.at(1));
  if (call == "launchctl bootout system/com.halvo.helper") machine_->endProcess();
  Turns::told(std::to_string(result.code) + result.output);
  return result;
}

std::vector<bool> WatchedAudio::runningSomewhereFlags() const {
  Turns::boundary();
  return {};
}

}  // namespace interleaving
}  // namespace halvo
