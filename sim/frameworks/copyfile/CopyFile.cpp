#include <copyfile.h>
#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/frameworks/testing/Instrumentation.h"

namespace halvo::sim {
namespace {

bool failWith(int error) {
  errno = error;
  return false;
}

int resultOf(bool copied) { return copied ? 0 : -1; }

bool copyContent(int from, int to) {
  constexpr std::size_t kChunk = std::size_t{1} << 30U;
  ssize_t count = 0;
  do count = ::sendfile(to, from, nullptr, kChunk);
  while (count > 0 || (count < 0 && errno == EINTR));
  return count == 0;
}

// Attributes that the target's file system does not take are left out.
void copyAttributes(int from, int to) {
  const ssize_t listSize = ::flistxattr(from, nullptr, 0);
  if (listSize <= 0) return;
  std::string names(static_cast<std::size_t>(listSize), '\0');
  const ssize_t used = ::flistxattr(from, names.data(), names.size());
  if (used <= 0) return;
  for (const char* name = names.data(); name < names.data() + used; name += std::strlen(name) + 1) {
    const ssize_t size = ::fgetxattr(from, name, nullptr, 0);
    if (size < 0) continue;
    std::vector<char> value(static_cast<std::size_t>(size));
    const ssize_t length = ::fgetxattr(from, name, value.data(), value.size());
    if (length >= 0) static_cast<void>(::fsetxattr(to, name, value.data(), static_cast<std::size_t>(length), 0));
  }
}

std::array<timespec, 2> timesOf(const struct stat& info) { return {info.st_atim, info.st_mtim}; }

// Owner and extended attributes as far as the system permits, the mode, and last the times.
bool copyMetadata(int from, int to, const struct stat& info) {
  constexpr mode_t kSetId = S_ISUID | S_ISGID;
  copyAttributes(from, to);
  // The owner before the mode: changing it clears the set-id bits. Whoever is not root keeps the copy, which is no
  // error.
  static_cast<void>(::fchown(to, info.st_uid, info.st_gid) == 0);
  // Set-id bits of files do not survive a clone, those of directories do.
  const mode_t mode = info.st_mode & ALLPERMS & (S_ISDIR(info.st_mode) ? ~mode_t{0} : ~kSetId);
  return ::fchmod(to, mode) == 0 && ::futimens(to, timesOf(info).data()) == 0;
}

std::optional<std::vector<std::string>> namesIn(const std::string& directory) {
  std::vector<std::string> names;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end;
       entry.increment(error)) {
    names.push_back(entry->path().filename().string());
  }
  errno = error.value();
  if (error) return std::nullopt;
  // In order, so that a copy that fails leaves the same partial tree every time.
  std::ranges::sort(names);
  return names;
}

bool copyRegularFile(const std::string& from, const std::string& to) {
  struct stat info {};
  // Without waiting: the file may have become a FIFO since it was looked at.
  const UniqueDescriptor source(::open(from.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOFOLLOW));
  if (!source.valid() || ::fstat(source.get(), &info) != 0) return false;
  if (!S_ISREG(info.st_mode)) return failWith(ENOTSUP);

  const mode_t writable = (info.st_mode & ACCESSPERMS) | S_IWUSR;
  const UniqueDescriptor target(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, writable));
  return target.valid() && copyContent(source.get(), target.get()) && copyMetadata(source.get(), target.get(), info);
}

// A link has neither a mode nor attributes of its own.
bool copyLink(const std::string& from, const std::string& to, const struct stat& info) {
  std::error_code error;
  const std::string target = std::filesystem::read_symlink(from, error).string();
  if (error) return failWith(error.value());
  if (::symlink(target.c_str(), to.c_str()) != 0) return false;
  static_cast<void>(::lchown(to.c_str(), info.st_uid, info.st_gid) == 0);
  return ::utimensat(AT_FDCWD, to.c_str(), timesOf(info).data(), AT_SYMLINK_NOFOLLOW) == 0;
}

// Copies a tree. Stops at the first failure with errno set and leaves what it made.
class Copier {
 public:
  // The links come last, when the times of the directories are set already.
  bool copy(const std::string& from, const std::string& to) {
    return copyItem(from, to) &&
           std::ranges::all_of(links_, [](const Link& link) { return copyLink(link.from, link.to, link.info); });
  }

 private:
  struct Link {
    std::string from;
    std::string to;
    struct stat info;
  };

  bool copyItem(const std::string& from, const std::string& to) {
    struct stat info {};
    if (::lstat(from.c_str(), &info) != 0) return false;
    if (S_ISREG(info.st_mode)) return copyRegularFile(from, to);
    if (S_ISDIR(info.st_mode)) return copyDirectory(from, to, info);
    if (!S_ISLNK(info.st_mode)) return failWith(ENOTSUP);
    links_.push_back({from, to, info});
    return true;
  }

  bool copyDirectory(const std::string& from, const std::string& to, const struct stat& info) {
    // Read before the target is made: it may lie inside, and would be copied into itself without end.
    const auto names = namesIn(from);
    if (!names || ::mkdir(to.c_str(), (info.st_mode & ACCESSPERMS) | S_IRWXU) != 0) return false;
    for (const std::string& name : *names) {
      if (!copyItem(from + "/" + name, to + "/" + name)) return false;
    }
    // Last: filling the directory changes its times, and its mode may forbid filling it.
    const UniqueDescriptor source(::open(from.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    const UniqueDescriptor target(::open(to.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    return source.valid() && target.valid() && copyMetadata(source.get(), target.get(), info);
  }

  std::vector<Link> links_;
};

// An existing directory means "copy into it".
std::string destination(const std::string& from, const std::string& to, copyfile_flags_t flags) {
  struct stat info {};
  const bool follow = (flags & COPYFILE_NOFOLLOW_DST) == 0;
  const int status = follow ? ::stat(to.c_str(), &info) : ::lstat(to.c_str(), &info);
  if (status != 0 || !S_ISDIR(info.st_mode)) return to;
  const std::size_t lastUsed = from.find_last_not_of('/');
  return to + "/" + std::filesystem::path(from.substr(0, lastUsed + 1)).filename().string();
}

std::string describe(const char* from, const char* to, copyfile_flags_t flags) {
  std::array<char, 16> hex{};
  static_cast<void>(std::snprintf(hex.data(), hex.size(), "0x%x", flags));
  return std::string("from=") + from + " to=" + to + " flags=" + hex.data();
}

}  // namespace
}  // namespace halvo::sim

extern "C" int copyfile(const char* from, const char* to, copyfile_state_t, copyfile_flags_t flags) {
  using namespace halvo::sim;
  constexpr copyfile_flags_t kNeeded = COPYFILE_RECURSIVE | COPYFILE_CLONE;
  constexpr copyfile_flags_t kKnown = kNeeded | COPYFILE_ALL | COPYFILE_EXCL | COPYFILE_NOFOLLOW;
  if (from == nullptr || to == nullptr) return resultOf(failWith(EINVAL));
  if (const auto scripted = observe("copyfile", [&] { return describe(from, to, flags); })) {
    return resultOf(scripted->status == 0 || failWith(scripted->status));
  }
  if ((flags & kNeeded) != kNeeded || (flags & ~kKnown) != 0) return resultOf(failWith(EINVAL));
  return resultOf(Copier().copy(from, destination(from, to, flags)));
}
