#include "HalvoHelper/system/RemoveTree.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "HalvoHelper/system/PathStrings.h"
#include "HalvoHelper/system/UniqueDescriptor.h"
#include "HalvoHelper/system/UserFlags.h"

namespace halvo {
namespace {

// How many directories of the way down stay open: enough for every bundle, and a small part of the 256 descriptors that
// launchd gives a daemon.
constexpr std::size_t kHeldOpen = 16;

struct DirectoryCloser {
  void operator()(DIR* directory) const { ::closedir(directory); }
};

// An item that was listed and is still to be removed.
struct Entry {
  std::string name;
  bool isDirectory;  // a hint about what to try first: by now the name may stand for something else
};

// A directory on the way down to where the walk is.
struct Level {
  Entry entry;
  ino_t inode = 0;
  UniqueDescriptor directory;  // closed while the walk is far below
  std::vector<Entry> left;
  bool emptied = true;  // so far: nothing that was listed stayed
};

// What an open directory holds, read to the end before anything is removed: removing while reading may skip entries.
std::optional<std::vector<Entry>> entriesOf(int directory) {
  UniqueDescriptor own(::fcntl(directory, F_DUPFD_CLOEXEC, 0));
  if (!own.valid()) return std::nullopt;
  const std::unique_ptr<DIR, DirectoryCloser> stream(::fdopendir(own.get()));
  if (!stream) return std::nullopt;
  static_cast<void>(own.release());

  std::vector<Entry> entries;
  while (true) {
    errno = 0;
    const dirent* entry = ::readdir(stream.get());
    if (entry == nullptr) break;
    const std::string_view name(entry->d_name);
    if (name != "." && name != "..") entries.push_back({std::string(name), entry->d_type == DT_DIR});
  }
  return errno == 0 ? std::optional(std::move(entries)) : std::nullopt;
}

// A walk down and up again that remembers its way in memory: neither the stack nor the descriptors nor the longest path
// that the system takes bound the depth of a tree.
class TreeRemoval {
 public:
  // The item is an entry of `above`, which is not part of the tree.
  TreeRemoval(UniqueDescriptor above, Entry item, dev_t device) : device_(device) {
    levels_.push_back({.entry = {}, .directory = std::move(above), .left = {}});
    levels_.back().left.push_back(std::move(item));
  }

  bool run() {
    while (true) {
      Level& here = levels_.back();
      if (!here.left.empty()) {
        Entry entry = std::move(here.left.back());
        here.left.pop_back();
        if (!removeOrEnter(entry)) levels_.back().emptied = false;
      } else if (levels_.size() == 1) {
        return here.emptied;
      } else if (!leave()) {
        return false;
      }
    }
  }

 private:
  enum class Entering { entered, noDirectory, refused };

  bool removeOrEnter(Entry& entry) {
    if (!entry.isDirectory && unlink(entry, 0)) return true;
    switch (enter(entry)) {
      case Entering::entered:
        return true;
      case Entering::noDirectory:
        return entry.isDirectory && unlink(entry, 0);
      case Entering::refused:
        return false;
    }
    return false;  // Not reached: entering has no other outcome.
  }

  // The directory is opened first and judged by its descriptor: whoever swaps a link in for it gets only that link
  // removed. O_NONBLOCK, since the name may meanwhile stand for a FIFO.
  Entering enter(Entry& entry) {
    constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    UniqueDescriptor directory(::openat(levels_.back().directory.get(), entry.name.c_str(), kFlags));
    if (!directory.valid()) return Entering::noDirectory;

    struct stat info {};
    if (::fstat(directory.get(), &info) != 0 || info.st_dev != device_) return Entering::refused;
    auto entries = entriesOf(directory.get());
    if (!entries) return Entering::refused;

    levels_.push_back({std::move(entry), info.st_ino, std::move(directory), std::move(*entries)});
    closeFarAbove();
    return Entering::entered;
  }

  // The directory above the tree stays open: ".." of a tree that is a mounted volume may be somewhere else.
  void closeFarAbove() {
    if (levels_.size() > kHeldOpen + 1) levels_[levels_.size() - 1 - kHeldOpen].directory.close();
  }

  // Goes up from a directory of which nothing is left to try, and removes it. False when there is no way up.
  bool leave() {
    if (!reopenAbove()) return false;
    const Entry entry = std::move(levels_.back().entry);
    const bool emptied = levels_.back().emptied;
    levels_.pop_back();  // closed before it is removed: what is still open is kept by the system and costs time
    if (!emptied || !unlink(entry, AT_REMOVEDIR)) levels_.back().emptied = false;
    return true;
  }

  // Somebody may have moved the directory, so that ".." leads out of the tree. Only the very directory through which
  // the walk came down is accepted.
  bool reopenAbove() {
    Level& above = levels_[levels_.size() - 2];
    if (above.directory.valid()) return true;
    UniqueDescriptor directory(
        ::openat(levels_.back().directory.get(), "..", O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat info {};
    if (!directory.valid() || ::fstat(directory.get(), &info) != 0) return false;
    if (info.st_dev != device_ || info.st_ino != above.inode) return false;
    above.directory = std::move(directory);
    return true;
  }

  // Whether the entry is gone, by this or by somebody else. A lock that its owner may set protects neither an entry nor
  // what is in a directory from root; the directory above the tree keeps its own.
  bool unlink(const Entry& entry, int flags) {
    const Level& here = levels_.back();
    const auto gone = [&] {
      return ::unlinkat(here.directory.get(), entry.name.c_str(), flags) == 0 || errno == ENOENT;
    };
    if (gone()) return true;
    if (errno != EPERM) return false;
    const bool directoryUnlocked = levels_.size() > 1 && halvoClearUserFlags(here.directory.get());
    const bool entryUnlocked = halvoClearUserFlags(here.directory.get(), entry.name);
    return (directoryUnlocked || entryUnlocked) && gone();
  }

  dev_t device_;
  std::vector<Level> levels_;  // the first is the directory above the tree
};

}  // namespace

bool halvoRemoveTree(const std::string& path) {
  const std::string name = halvoLastPathComponent(path);
  std::string above = halvoDeletingLastPathComponent(path);
  if (above.empty()) above = ".";
  UniqueDescriptor parent(::open(above.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!parent.valid()) return false;

  struct stat info {};
  if (::fstatat(parent.get(), name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) return errno == ENOENT;
  return TreeRemoval(std::move(parent), {name, S_ISDIR(info.st_mode)}, info.st_dev).run();
}

}  // namespace halvo
