#include "HalvoHelper/testing/InMemoryPrivilegedFS.h"

#include "HalvoHelper/system/PathStrings.h"
#include "HalvoHelper/testing/ScriptedPrivilegedFS.h"

namespace halvo {
namespace {

// A directory's path without trailing slashes; a file's must have none.
std::string trimmed(const std::string& path) {
  if (!path.starts_with('/') || (!path.ends_with('/') && path.find("//") == std::string::npos)) return path;
  return halvoAppendingPathComponent(halvoDeletingLastPathComponent(path), halvoLastPathComponent(path));
}

// Whether `path` is `tree` or lies below it.
bool isIn(const std::string& tree, const std::string& path) {
  return path.starts_with(tree) && (path.size() == tree.size() || path[tree.size()] == '/');
}

}  // namespace

bool InMemoryPrivilegedFS::exists(const std::string& path) const {
  step();
  return isThere(path);
}

bool InMemoryPrivilegedFS::remove(const std::string& path) const {
  step();
  if (failing.contains("remove " + path) || directories.contains(trimmed(path))) return false;
  for (const auto& file : files) {
    if (path.starts_with(file.first + "/")) return false;
  }
  if (files.contains(path)) eraseTree(path);
  return true;
}

bool InMemoryPrivilegedFS::removeTree(const std::string& path) const {
  if (!alive() || failing.contains("removeTree " + path)) return false;
  if (isThere(path)) eraseTree(trimmed(path));
  return true;
}

bool InMemoryPrivilegedFS::copyTree(const std::string& source, const std::string& destination) const {
  step();
  if (isThere(destination)) eraseTree(trimmed(destination));
  const std::string from = trimmed(source);
  const std::string to = trimmed(destination);
  if (!makeDirectories(halvoDeletingLastPathComponent(to)) || isThere(to) || !isThere(source)) return false;
  if (isIn(from, to) || failing.contains("copyTree " + source + " -> " + destination)) return false;

  const auto ages = daysAgo;
  for (const std::string& path : std::set(directories)) {
    if (isIn(from, path)) makeDirectories(to + path.substr(from.size()));
  }
  for (const auto& [path, contents] : std::map(files)) {
    if (isIn(from, path)) put(to + path.substr(from.size()), contents);
  }
  for (const auto& [path, days] : ages) {
    if (isIn(from, path)) daysAgo[to + path.substr(from.size())] = days;
  }
  return true;
}

bool InMemoryPrivilegedFS::stageFile(const std::string& source, const std::string& destination) const {
  step();
  const bool refused = failing.contains("stageFile " + source + " -> " + destination) || !files.contains(source) ||
                       destination.ends_with('/') || isThere(destination);
  if (refused || !directories.contains(halvoDeletingLastPathComponent(destination))) return false;
  put(destination, files[source]);
  return true;
}

bool InMemoryPrivilegedFS::makeDir(const std::string& path) const {
  step();
  if (failing.contains("makeDir " + path)) return false;
  return makeDirectories(trimmed(path)) || isThere(path);
}

std::vector<std::string> InMemoryPrivilegedFS::entries(const std::string& path) const {
  step();
  std::vector<std::string> names;
  const std::string directory = trimmed(path);
  const auto note = [&](const std::string& item) {
    if (item != "/" && item.starts_with(directory) && halvoDeletingLastPathComponent(item) == directory) {
      names.push_back(halvoLastPathComponent(item));
    }
  };
  for (const auto& file : files) note(file.first);
  for (const auto& item : directories) note(item);
  return names;
}

std::optional<std::int64_t> InMemoryPrivilegedFS::modifiedDaysAgo(const std::string& path) const {
  step();
  if (!isThere(path)) return std::nullopt;
  const auto found = daysAgo.find(trimmed(path));
  return found == daysAgo.end() ? 0 : found->second;
}

bool InMemoryPrivilegedFS::makePrivateDir(const std::string& path, int mode) const {
  step();
  return !failing.contains(makePrivateDirLine(path, mode)) && makeDirectories(trimmed(path));
}

void InMemoryPrivilegedFS::step() const {
  if (!alive()) throw ProcessKilled();
}

bool InMemoryPrivilegedFS::write(const std::string& path, const std::string& contents) const {
  if (directories.contains(path) || !makeDirectories(halvoDeletingLastPathComponent(path))) return false;
  put(path, contents);
  return true;
}

bool InMemoryPrivilegedFS::alive() const {
  if (!callsUntilKilled) return true;
  if (*callsUntilKilled == 0) return false;
  --*callsUntilKilled;
  return true;
}

bool InMemoryPrivilegedFS::isThere(const std::string& path) const {
  return files.contains(path) || directories.contains(trimmed(path));
}

// Makes all of them or, where a file is in the way, none.
bool InMemoryPrivilegedFS::makeDirectories(const std::string& path) const {
  if (directories.contains(path)) return true;
  if (path.empty() || files.contains(path) || !makeDirectories(halvoDeletingLastPathComponent(path))) return false;
  directories.insert(path);
  daysAgo.erase(halvoDeletingLastPathComponent(path));
  return true;
}

void InMemoryPrivilegedFS::put(const std::string& path, const std::string& contents) const {
  files[path] = contents;
  daysAgo.erase(path);
  daysAgo.erase(halvoDeletingLastPathComponent(path));
}

void InMemoryPrivilegedFS::eraseTree(const std::string& path) const {
  std::erase_if(files, [&](const auto& file) { return isIn(path, file.first); });
  std::erase_if(directories, [&](const auto& directory) { return isIn(path, directory); });
  std::erase_if(daysAgo, [&](const auto& age) { return isIn(path, age.first); });
  daysAgo.erase(halvoDeletingLastPathComponent(path));
}

}  // namespace halvo
