#include "client/doctor/Disk.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <limits>
#include <memory>

#include "HalvoHelper/system/UniqueDescriptor.h"

namespace halvo {
namespace {

// O_NONBLOCK: opening a FIFO without a writer would never return.
constexpr int kReading = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;

Sight sightFor(int error) { return error == ENOENT || error == ENOTDIR ? Sight::absent : Sight::unreadable; }

ItemKind kindOf(mode_t mode) {
  if (S_ISDIR(mode)) return ItemKind::folder;
  if (S_ISREG(mode)) return ItemKind::file;
  return S_ISLNK(mode) ? ItemKind::link : ItemKind::other;
}

struct Opened {
  UniqueDescriptor file;
  int error;  // why it is not open
};

Opened openIn(int folder, const std::string& name, int flags) {
  UniqueDescriptor file(::openat(folder, name.c_str(), kReading | flags));
  const int error = file.valid() ? 0 : errno;
  return {std::move(file), error};
}

// Each folder on the way is opened for itself, so that none of them is a link.
Opened openBelow(const std::string& path, std::string_view below) {
  Opened opened = openIn(AT_FDCWD, path, below.empty() ? 0 : O_DIRECTORY);
  while (opened.file.valid() && !below.empty()) {
    const std::string name(below.substr(0, below.find('/')));
    below.remove_prefix(std::min(name.size() + 1, below.size()));
    opened = openIn(opened.file.get(), name, below.empty() ? 0 : O_DIRECTORY);
  }
  return opened;
}

// Up to `most` bytes from there on; false when reading fails.
bool readInto(std::string& bytes, int file, off_t from, std::size_t most) {
  bytes.resize(most);
  std::size_t length = 0;
  while (length < most) {
    const ssize_t count = ::pread(file, bytes.data() + length, most - length, from + static_cast<off_t>(length));
    if (count == 0) break;
    if (count > 0) {
      length += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      return false;
    }
  }
  bytes.resize(length);
  return true;
}

enum class End { head, tail };

Contents contentsOf(const Opened& opened, End end, std::size_t most) {
  // A link at the end of the path is refused with ELOOP, and is there.
  if (!opened.file.valid()) return {opened.error == ELOOP ? Sight::present : sightFor(opened.error), {}};
  struct stat info {};
  if (::fstat(opened.file.get(), &info) != 0) return {Sight::unreadable, {}};
  Contents contents{Sight::present, {}};
  if (!S_ISREG(info.st_mode)) return contents;
  const off_t beyond = std::max<off_t>(0, info.st_size - static_cast<off_t>(most));
  const off_t from = end == End::head ? 0 : beyond;
  if (!readInto(contents.bytes, opened.file.get(), from, most)) return {Sight::unreadable, {}};
  return contents;
}

struct FolderCloser {
  void operator()(DIR* folder) const { ::closedir(folder); }
};

Names namesIn(Opened folder, std::size_t most) {
  if (folder.error != 0) return {sightFor(folder.error), {}};
  const std::unique_ptr<DIR, FolderCloser> stream(::fdopendir(folder.file.get()));
  if (!stream) return {Sight::unreadable, {}};
  static_cast<void>(folder.file.release());
  Names found{Sight::present, {}};
  while (found.names.size() < most) {
    const dirent* entry = ::readdir(stream.get());
    if (entry == nullptr) break;
    const std::string_view name(entry->d_name);
    if (name != "." && name != "..") found.names.emplace_back(name);
  }
  return found;
}

// The limits keep somebody who can write into a part from holding whoever looks at it.
class Count {
 public:
  void add(int above, const std::string& name, int depth) {
    struct stat info {};
    --entriesLeft_;
    if (::fstatat(above, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) return endEarly();
    if (S_ISREG(info.st_mode)) count(info.st_size);
    if (!S_ISDIR(info.st_mode)) return;
    if (depth == kDeepest) return endEarly();
    const Opened folder = openIn(above, name, O_DIRECTORY);
    addAll(folder.file.get(), depth);
  }

  [[nodiscard]] const TreeSize& size() const { return size_; }

 private:
  static constexpr int kDeepest = 16;
  static constexpr std::size_t kMostEntries = 10'000;

  // Where the folder itself is not open, nothing can be opened in it either.
  void addAll(int folder, int depth) {
    const Names inside = namesIn(openIn(folder, ".", O_DIRECTORY), kMostEntries);
    if (inside.sight != Sight::present) return endEarly();
    for (const std::string& name : inside.names) {
      if (entriesLeft_ == 0) return endEarly();
      add(folder, name, depth + 1);
    }
  }

  // A file may claim to be as long as a number can be.
  void count(std::int64_t bytes) {
    if (bytes > std::numeric_limits<std::int64_t>::max() - size_.bytes) return endEarly();
    size_.bytes += bytes;
  }

  void endEarly() { size_.isAll = false; }

  TreeSize size_;
  std::size_t entriesLeft_ = kMostEntries;
};

}  // namespace

Item Disk::look(const std::string& path) const {
  struct stat info {};
  if (::lstat((root_ + path).c_str(), &info) != 0) return {.sight = sightFor(errno)};
  return {.sight = Sight::present,
          .kind = kindOf(info.st_mode),
          .owner = info.st_uid,
          .group = info.st_gid,
          .mode = info.st_mode & 07777U,
          .age = Seconds(std::time(nullptr) - info.st_mtime),
          .bytes = info.st_size};
}

Contents Disk::head(const std::string& path, std::string_view below, std::size_t most) const {
  return contentsOf(openBelow(root_ + path, below), End::head, most);
}

Contents Disk::tail(const std::string& path, std::size_t most) const {
  return contentsOf(openBelow(root_ + path, {}), End::tail, most);
}

Names Disk::names(const std::string& folder, std::size_t most) const {
  return namesIn(openIn(AT_FDCWD, root_ + folder, O_DIRECTORY), most);
}

TreeSize Disk::sizeOf(const std::string& folder) const {
  Count count;
  count.add(AT_FDCWD, root_ + folder, 0);
  return count.size();
}

}  // namespace halvo
