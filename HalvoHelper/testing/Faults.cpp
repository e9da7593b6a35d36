#include "HalvoHelper/testing/Faults.h"

#include <new>
#include <utility>

#include "HalvoHelper/system/PathStrings.h"
#include "HalvoHelper/testing/ScriptedPrivilegedFS.h"

namespace halvo {
namespace {

const std::map<std::string, std::vector<Fault>>& table() {
  using enum Fault;
  static const std::map<std::string, std::vector<Fault>> faults = {
      {"exists", {fails, throws, dies}},
      {"remove", {fails, throws, dies}},
      // Does not throw, because the clean-up of a run calls it: there it would end the process, as dies does.
      {"removeTree", {fails, failsHalfway, dies, diesHalfway}},
      {"copyTree", {fails, failsCleared, failsHalfway, throws, dies, diesHalfway}},
      {"stageFile", {fails, throws, dies, diesHalfway}},
      {"makeDir", {fails, throws, dies}},
      {"entries", {fails, throws, dies}},
      {"modifiedDaysAgo", {fails, throws, dies}},
      {"makePrivateDir", {fails, failsHalfway, throws, dies, diesHalfway}},
      {"installer", {fails, failsHalfway, failsAfterwards, crashes, cannotStart, throws, dies, diesHalfway}},
      {"pkgutil", {fails, crashes, cannotStart, saysNothing, throws, dies}},
      {"any other tool", {fails, crashes, cannotStart, throws, dies}},
  };
  return faults;
}

// The last file at `path` or below, as a line of the listing.
std::optional<std::string> lastFile(const FileTree& tree, const std::string& path) {
  std::optional<std::string> last;
  for (const std::string& line : tree.listing(path)) {
    if (line.find('=') != std::string::npos) last = line;
  }
  return last;
}

}  // namespace

const char* faultName(Fault fault) {
  switch (fault) {
    case Fault::fails:
      return "fails";
    case Fault::failsCleared:
      return "fails, destination cleared";
    case Fault::failsHalfway:
      return "fails half-way";
    case Fault::failsAfterwards:
      return "fails at the end";
    case Fault::crashes:
      return "is ended by a signal";
    case Fault::cannotStart:
      return "cannot be started";
    case Fault::saysNothing:
      return "prints nothing";
    case Fault::throws:
      return "runs out of memory";
    case Fault::dies:
      return "helper killed before";
    case Fault::diesHalfway:
      return "helper killed half-way";
  }
  return "";
}

const std::vector<Fault>& faultsOf(const Call& call) {
  const auto found = table().find(call.operation);
  return found == table().end() ? table().at("any other tool") : found->second;
}

std::optional<Fault> FaultScript::next(Call call) {
  if (processEnded) throw ProcessKilled();
  const auto fault = faults.find(calls.size());
  before(call);
  calls.push_back(std::move(call));
  return fault == faults.end() ? std::nullopt : std::optional(fault->second);
}

void FaultScript::leaveAfter(Fault fault) {
  if (fault == Fault::throws) throw std::bad_alloc();
  if (fault != Fault::dies && fault != Fault::diesHalfway) return;
  processEnded = true;
  throw ProcessKilled();
}

FaultyPrivilegedFS::FaultyPrivilegedFS(std::shared_ptr<const FileTree> tree, std::shared_ptr<FaultScript> script)
    : tree_(std::move(tree)), script_(std::move(script)) {}

bool FaultyPrivilegedFS::exists(const std::string& path) const {
  const auto fault = script_->next({"exists", "exists " + path});
  if (!fault) return tree_->fs()->exists(path);
  script_->leaveAfter(*fault);
  return false;
}

bool FaultyPrivilegedFS::remove(const std::string& path) const {
  const auto fault = script_->next({"remove", "remove " + path});
  if (!fault) return tree_->fs()->remove(path);
  script_->leaveAfter(*fault);
  return false;
}

bool FaultyPrivilegedFS::removeTree(const std::string& path) const {
  if (script_->processEnded) return false;
  const auto fault = script_->next({"removeTree", "removeTree " + path});
  if (!fault) return tree_->fs()->removeTree(path);
  if (*fault == Fault::failsHalfway || *fault == Fault::diesHalfway) removeLastFile(path);
  if (*fault == Fault::dies || *fault == Fault::diesHalfway) script_->processEnded = true;
  return false;
}

bool FaultyPrivilegedFS::copyTree(const std::string& source, const std::string& destination) const {
  const auto fault = script_->next({"copyTree", "copyTree " + source + " -> " + destination});
  if (!fault) return tree_->fs()->copyTree(source, destination);
  if (*fault == Fault::failsCleared) tree_->fs()->removeTree(destination);
  if (*fault == Fault::failsHalfway) removeLastFile(destination);
  if (*fault == Fault::diesHalfway && tree_->fs()->copyTree(source, destination)) cutLastFile(destination);
  script_->leaveAfter(*fault);
  return false;
}

bool FaultyPrivilegedFS::stageFile(const std::string& source, const std::string& destination) const {
  const auto fault = script_->next({"stageFile", "stageFile " + source + " -> " + destination});
  if (!fault) return tree_->fs()->stageFile(source, destination);
  if (*fault == Fault::diesHalfway && tree_->fs()->stageFile(source, destination)) cutLastFile(destination);
  script_->leaveAfter(*fault);
  return false;
}

bool FaultyPrivilegedFS::makeDir(const std::string& path) const {
  const auto fault = script_->next({"makeDir", "makeDir " + path});
  if (!fault) return tree_->fs()->makeDir(path);
  script_->leaveAfter(*fault);
  return false;
}

std::vector<std::string> FaultyPrivilegedFS::entries(const std::string& path) const {
  const auto fault = script_->next({"entries", "entries " + path});
  if (!fault) return tree_->fs()->entries(path);
  script_->leaveAfter(*fault);
  return {};
}

std::optional<std::int64_t> FaultyPrivilegedFS::modifiedDaysAgo(const std::string& path) const {
  const auto fault = script_->next({"modifiedDaysAgo", "modifiedDaysAgo " + path});
  if (!fault) return tree_->fs()->modifiedDaysAgo(path);
  script_->leaveAfter(*fault);
  return std::nullopt;
}

bool FaultyPrivilegedFS::makePrivateDir(const std::string& path, int mode) const {
  const auto fault = script_->next({"makePrivateDir", makePrivateDirLine(path, mode)});
  if (!fault) return tree_->fs()->makePrivateDir(path, mode);
  if (*fault == Fault::failsHalfway || *fault == Fault::diesHalfway) tree_->fs()->makePrivateDir(path, mode);
  script_->leaveAfter(*fault);
  return false;
}

void FaultyPrivilegedFS::removeLastFile(const std::string& path) const {
  const auto line = lastFile(*tree_, path);
  if (line) tree_->fs()->remove(path + line->substr(0, line->find('=')));
}

void FaultyPrivilegedFS::cutLastFile(const std::string& path) const {
  const auto line = lastFile(*tree_, path);
  if (!line) return;
  const std::size_t end = line->find('=');
  const std::string contents = line->substr(end + 1);
  tree_->write(path + line->substr(0, end), contents.substr(0, contents.size() / 2));
}

FaultyProcessRunner::FaultyProcessRunner(std::shared_ptr<const ProcessRunner> tools,
                                         std::shared_ptr<FaultScript> script,
                                         std::function<void(const std::function<void()>& run)> half)
    : tools_(std::move(tools)), script_(std::move(script)), half_(std::move(half)) {}

ProcessResult FaultyProcessRunner::run(const std::string& tool, const std::vector<std::string>& arguments) const {
  std::string line = "run " + tool;
  for (const std::string& argument : arguments) line += " " + argument;
  const auto act = [&] { static_cast<void>(tools_->run(tool, arguments)); };

  const auto fault = script_->next({halvoLastPathComponent(tool), line});
  if (!fault) return tools_->run(tool, arguments);
  if (*fault == Fault::failsAfterwards || *fault == Fault::saysNothing) act();
  if (*fault == Fault::failsHalfway || *fault == Fault::crashes || *fault == Fault::diesHalfway) half_(act);
  script_->leaveAfter(*fault);
  if (*fault == Fault::cannotStart) return {.code = -1, .output = "spawn failed: Cannot allocate memory"};
  if (*fault == Fault::saysNothing) return {.code = 0, .output = ""};
  if (*fault == Fault::crashes) return {.code = 9, .output = ""};
  return {.code = 1, .output = "it failed\n"};
}

}  // namespace halvo
