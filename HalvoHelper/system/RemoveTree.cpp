#include "HalvoHelper/system/RemoveTree.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "HalvoHelper/system/PathStrings.h"
#include "HalvoHelper/system/UniqueDescriptor.h"

namespace halvo {
namespace {

// Each level holds one descriptor, and launchd gives a daemon 256.
constexpr int kDeepestLevel = 200;

struct DirectoryCloser {
  void operator()(DIR* directory) const { ::closedir(directory); }
};

// The names in an open directory, taken before anything is removed: removing while reading may skip entries.
std::optional<std::vector<std::string>> namesIn(int directory) {
  UniqueDescriptor own(::openat(directory, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!own.valid()) return std::nullopt;
  const std::unique_ptr<DIR, DirectoryCloser> stream(::fdopendir(own.get()));
  if (!stream) return std::nullopt;
  static_cast<void>(own.release());

  std::vector<std::string> names;
  errno = 0;
  while (const dirent* entry = ::readdir(stream.get())) {
    const std::string_view name(entry->d_name);
    if (name != "." && name != "..") names.emplace_back(name);
  }
  return errno == 0 ? std::optional(std::move(names)) : std::nullopt;
}

bool removeEntry(int parent, const std::string& name, dev_t device, int level);

bool removeContents(int directory, dev_t device, int level) {
  const auto names = namesIn(directory);
  if (!names) return false;
  bool removedAll = true;
  for (const std::string& name : *names) removedAll = removeEntry(directory, name, device, level) && removedAll;
  return removedAll;
}

bool removeEntry(int parent, const std::string& name, dev_t device, int level) {
  // The directory is opened first and judged by its descriptor: whoever swaps a link in for it gets only that link
  // removed. O_NONBLOCK, since the name may meanwhile stand for a FIFO.
  constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  const UniqueDescriptor directory(::openat(parent, name.c_str(), kFlags));
  if (!directory.valid()) return ::unlinkat(parent, name.c_str(), 0) == 0 || errno == ENOENT;

  struct stat info {};
  if (::fstat(directory.get(), &info) != 0 || info.st_dev != device || level >= kDeepestLevel) return false;
  if (!removeContents(directory.get(), device, level + 1)) return false;
  return ::unlinkat(parent, name.c_str(), AT_REMOVEDIR) == 0 || errno == ENOENT;
}

}  // namespace

bool halvoRemoveTree(const std::string& path) {
  const std::string name = halvoLastPathComponent(path);
  std::string above = halvoDeletingLastPathComponent(path);
  if (above.empty()) above = ".";
  const UniqueDescriptor parent(::open(above.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!parent.valid()) return false;

  struct stat info {};
  if (::fstatat(parent.get(), name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) return errno == ENOENT;
  return removeEntry(parent.get(), name, info.st_dev, 0);
}

}  // namespace halvo
