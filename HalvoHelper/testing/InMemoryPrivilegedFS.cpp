#include "HalvoHelper/testing/InMemoryPrivilegedFS.h"

#include "HalvoHelper/system/PathStrings.h"
#include "HalvoHelper/testing/ScriptedPrivilegedFS.h"

namespace halvo {

bool InMemoryPrivilegedFS::exists(const std::string& path) const {
  step();
  return files.contains(path) || directories.contains(path);
}

bool InMemoryPrivilegedFS::remove(const std::string& path) const {
  step();
  if (failing.contains("remove " + path) || directories.contains(path)) return false;
  files.erase(path);
  return true;
}

bool InMemoryPrivilegedFS::removeTree(const std::string& path) const {
  if (!alive() || failing.contains("removeTree " + path)) return false;
  return eraseTree(path);
}

bool InMemoryPrivilegedFS::copyTree(const std::string& source, const std::string& destination) const {
  step();
  eraseTree(destination);
  if (failing.contains("copyTree " + source + " -> " + destination)) return false;
  if (!files.contains(source) && !directories.contains(source)) return false;
  addDirectories(halvoDeletingLastPathComponent(destination));
  const auto filesBefore = files;
  const auto directoriesBefore = directories;
  for (const auto& [path, contents] : filesBefore) {
    if (path == source || path.starts_with(source + "/")) files[destination + path.substr(source.size())] = contents;
  }
  for (const auto& path : directoriesBefore) {
    if (path == source || path.starts_with(source + "/")) directories.insert(destination + path.substr(source.size()));
  }
  return true;
}

bool InMemoryPrivilegedFS::stageFile(const std::string& source, const std::string& destination) const {
  step();
  const bool refused = failing.contains("stageFile " + source + " -> " + destination) || !files.contains(source) ||
                       files.contains(destination) || directories.contains(destination);
  if (refused || !directories.contains(halvoDeletingLastPathComponent(destination))) return false;
  files[destination] = files[source];
  return true;
}

bool InMemoryPrivilegedFS::makeDir(const std::string& path) const {
  step();
  if (failing.contains("makeDir " + path)) return false;
  if (!files.contains(path)) addDirectories(path);
  return true;
}

std::vector<std::string> InMemoryPrivilegedFS::entries(const std::string& path) const {
  step();
  std::set<std::string> names;
  const auto note = [&](const std::string& item) {
    if (halvoDeletingLastPathComponent(item) == path) names.insert(halvoLastPathComponent(item));
  };
  for (const auto& file : files) note(file.first);
  for (const auto& directory : directories) note(directory);
  return {names.begin(), names.end()};
}

std::optional<std::int64_t> InMemoryPrivilegedFS::modifiedDaysAgo(const std::string& path) const {
  step();
  if (!files.contains(path) && !directories.contains(path)) return std::nullopt;
  const auto found = daysAgo.find(path);
  return found == daysAgo.end() ? 0 : found->second;
}

bool InMemoryPrivilegedFS::makePrivateDir(const std::string& path, int mode) const {
  step();
  if (failing.contains(makePrivateDirLine(path, mode)) || files.contains(path)) return false;
  addDirectories(path);
  return true;
}

void InMemoryPrivilegedFS::step() const {
  if (!alive()) throw ProcessKilled();
}

bool InMemoryPrivilegedFS::alive() const {
  if (!callsUntilKilled) return true;
  if (*callsUntilKilled == 0) return false;
  --*callsUntilKilled;
  return true;
}

void InMemoryPrivilegedFS::addDirectories(const std::string& path) const {
  for (std::string directory = path; directory != "/"; directory = halvoDeletingLastPathComponent(directory)) {
    directories.insert(directory);
  }
}

bool InMemoryPrivilegedFS::eraseTree(const std::string& path) const {
  const auto below = [&](const std::string& item) { return item == path || item.starts_with(path + "/"); };
  std::erase_if(files, [&](const auto& file) { return below(file.first); });
  std::erase_if(directories, below);
  return true;
}

}  // namespace halvo
