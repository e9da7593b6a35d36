#include "HalvoHelper/testing/ScriptedPrivilegedFS.h"

#include <sstream>
#include <utility>

namespace halvo {

ScriptedPrivilegedFS::ScriptedPrivilegedFS(std::shared_ptr<CallRecorder> recorder) : recorder_(std::move(recorder)) {}

bool ScriptedPrivilegedFS::exists(const std::string& path) const {
  recorder_->calls.push_back("exists " + path);
  return present.contains(path);
}

bool ScriptedPrivilegedFS::remove(const std::string& path) const { return succeeds("remove " + path); }

bool ScriptedPrivilegedFS::removeTree(const std::string& path) const { return succeeds("removeTree " + path); }

bool ScriptedPrivilegedFS::copyTree(const std::string& source, const std::string& destination) const {
  return succeeds("copyTree " + source + " -> " + destination);
}

bool ScriptedPrivilegedFS::stageFile(const std::string& source, const std::string& destination) const {
  return succeeds("stageFile " + source + " -> " + destination);
}

bool ScriptedPrivilegedFS::makeDir(const std::string& path) const { return succeeds("makeDir " + path); }

std::vector<std::string> ScriptedPrivilegedFS::entries(const std::string& path) const {
  recorder_->calls.push_back("entries " + path);
  const auto found = listings.find(path);
  return found == listings.end() ? std::vector<std::string>() : found->second;
}

std::optional<std::int64_t> ScriptedPrivilegedFS::modifiedDaysAgo(const std::string& path) const {
  recorder_->calls.push_back("modifiedDaysAgo " + path);
  const auto found = daysAgo.find(path);
  return found == daysAgo.end() ? std::nullopt : std::optional(found->second);
}

bool ScriptedPrivilegedFS::makePrivateDir(const std::string& path, int mode) const {
  return succeeds(makePrivateDirLine(path, mode));
}

bool ScriptedPrivilegedFS::succeeds(const std::string& line) const {
  recorder_->calls.push_back(line);
  return !failing.contains(line);
}

std::string makePrivateDirLine(const std::string& path, int mode) {
  std::ostringstream line;
  line << "makePrivateDir " << path << " " << std::oct << mode;
  return line.str();
}

}  // namespace halvo
