#include "HalvoHelper/testing/FileTree.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "HalvoHelper/testing/FileState.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

namespace fs = std::filesystem;

std::string lineOf(const fs::path& item, const std::string& shown) {
  if (fs::is_directory(fs::symlink_status(item))) return shown + "/";
  return shown + "=" + contentsOf(item.string());
}

}  // namespace

bool InMemoryTree::write(const std::string& path, const std::string& contents) const {
  return memory->write(path, contents);
}

std::vector<std::string> InMemoryTree::listing(const std::string& path) const {
  std::vector<std::string> lines;
  const std::string below = path + "/";
  const auto isIn = [&](const std::string& item) { return item == path || item.starts_with(below); };
  // What begins with the path follows it in the order of the names.
  for (auto next = memory->directories.lower_bound(path); next != memory->directories.end(); ++next) {
    if (!next->starts_with(path)) break;
    if (isIn(*next)) lines.push_back(next->substr(path.size()) + "/");
  }
  for (auto next = memory->files.lower_bound(path); next != memory->files.end(); ++next) {
    if (!next->first.starts_with(path)) break;
    if (isIn(next->first)) lines.push_back(next->first.substr(path.size()) + "=" + next->second);
  }
  std::ranges::sort(lines);
  return lines;
}

void InMemoryTree::setDaysAgo(const std::string& path, std::int64_t days) const { memory->daysAgo[path] = days; }

bool DiskTree::write(const std::string& path, const std::string& contents) const {
  const fs::path target = root_ + path;
  const fs::path written = target.string() + ".part";
  std::error_code error;
  fs::create_directories(target.parent_path(), error);
  std::ofstream file(written, std::ios::binary);
  file << contents;
  file.close();
  if (!error && file.good()) fs::rename(written, target, error);
  if (!error && file.good()) return true;
  fs::remove(written, error);
  return false;
}

std::vector<std::string> DiskTree::listing(const std::string& path) const {
  std::vector<std::string> lines;
  const std::string top = root_ + path;
  if (!isNamed(top)) return lines;
  lines.push_back(lineOf(top, ""));
  if (!fs::is_directory(top)) return lines;
  for (const auto& item : fs::recursive_directory_iterator(top)) {
    lines.push_back(lineOf(item.path(), item.path().string().substr(top.size())));
  }
  std::ranges::sort(lines);
  return lines;
}

void DiskTree::setDaysAgo(const std::string& path, std::int64_t days) const {
  setModifiedHoursAgo(root_ + path, days * 24);
}

}  // namespace halvo
