#include <copyfile.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "sim/frameworks/copyfile/Metadata.h"
#include "sim/frameworks/testing/Instrumentation.h"

namespace halvo::sim {
namespace {

class Descriptor {
 public:
  explicit Descriptor(int value) : value_(value) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    const int kept = errno;
    if (value_ >= 0) ::close(value_);
    errno = kept;
  }
  [[nodiscard]] int get() const { return value_; }
  [[nodiscard]] bool valid() const { return value_ >= 0; }

 private:
  int value_;
};

bool failWith(int error) {
  errno = error;
  return false;
}

int resultOf(bool copied) { return copied ? 0 : -1; }

bool writeAll(int descriptor, const char* bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t count = ::write(descriptor, bytes, size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    bytes += count;
    size -= static_cast<std::size_t>(count);
  }
  return true;
}

bool copyContent(int from, int to) {
  std::vector<char> chunk(std::size_t{128} * 1024);
  while (true) {
    const ssize_t count = ::read(from, chunk.data(), chunk.size());
    if (count == 0) return true;
    if (count < 0 && errno != EINTR) return false;
    if (count > 0 && !writeAll(to, chunk.data(), static_cast<std::size_t>(count))) return false;
  }
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

// Copies one item, or a tree. Stops at the first failure with errno set and leaves what it made.
class Copier {
 public:
  explicit Copier(copyfile_flags_t flags) : flags_(flags) {}

  // The links of a tree come last, when the times of its directories are set already.
  bool copy(const std::string& from, const std::string& to) {
    return copyItem(from, to) &&
           std::ranges::all_of(links_, [this](const Link& link) { return copyLink(link.from, link.to, link.info); });
  }

  // An existing directory means "copy into it".
  std::string treeDestination(const std::string& from, const std::string& to) const {
    struct stat info {};
    const bool follow = !has(COPYFILE_NOFOLLOW_DST);
    const int status = follow ? ::stat(to.c_str(), &info) : ::lstat(to.c_str(), &info);
    if (status != 0 || !S_ISDIR(info.st_mode)) return to;
    const std::size_t lastUsed = from.find_last_not_of('/');
    return to + "/" + std::filesystem::path(from.substr(0, lastUsed + 1)).filename().string();
  }

 private:
  struct Link {
    std::string from;
    std::string to;
    struct stat info;
  };

  bool copyItem(const std::string& from, const std::string& to) {
    struct stat info {};
    const bool follow = !has(COPYFILE_NOFOLLOW_SRC);
    if ((follow ? ::stat(from.c_str(), &info) : ::lstat(from.c_str(), &info)) != 0) return false;
    if (S_ISREG(info.st_mode)) return copyRegularFile(from, to);
    if (S_ISDIR(info.st_mode)) return has(COPYFILE_RECURSIVE) ? copyTree(from, to, info) : makeDirectory(to, info);
    if (!S_ISLNK(info.st_mode)) return failWith(ENOTSUP);
    links_.push_back({from, to, info});
    return true;
  }

  bool has(copyfile_flags_t flag) const { return (flags_ & flag) != 0; }
  int followSource() const { return has(COPYFILE_NOFOLLOW_SRC) ? O_NOFOLLOW : 0; }

  bool copyRegularFile(const std::string& from, const std::string& to) const {
    struct stat info {};
    // Without waiting: the file may have become a FIFO since it was looked at.
    const Descriptor source(::open(from.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | followSource()));
    if (!source.valid() || ::fstat(source.get(), &info) != 0) return false;
    if (!S_ISREG(info.st_mode)) return failWith(ENOTSUP);

    const int exclusive = has(COPYFILE_EXCL) ? O_EXCL : O_TRUNC;
    const int linkRule = has(COPYFILE_NOFOLLOW_DST) ? O_NOFOLLOW : 0;
    const mode_t readable = (info.st_mode & ACCESSPERMS) | S_IWUSR;
    const Descriptor target(::open(to.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | exclusive | linkRule, readable));
    if (!target.valid()) return false;
    if (has(COPYFILE_DATA) && !copyContent(source.get(), target.get())) return false;
    return copyMetadata(source.get(), target.get(), info, flags_);
  }

  bool copyLink(const std::string& from, const std::string& to, const struct stat& info) const {
    std::error_code error;
    const std::string target = std::filesystem::read_symlink(from, error).string();
    if (error) return failWith(error.value());
    return ::symlink(target.c_str(), to.c_str()) == 0 && copyLinkMetadata(to.c_str(), info, flags_);
  }

  bool makeDirectory(const std::string& to, const struct stat& info) const {
    if (::mkdir(to.c_str(), (info.st_mode & ACCESSPERMS) | S_IRWXU) == 0) return true;
    const int error = errno;
    struct stat existing {};
    const bool merge = error == EEXIST && !has(COPYFILE_EXCL) && ::lstat(to.c_str(), &existing) == 0;
    return merge && S_ISDIR(existing.st_mode) ? true : failWith(error);
  }

  bool copyTree(const std::string& from, const std::string& to, const struct stat& info) {
    // Read before the target is made: it may lie inside, and would be copied into itself without end.
    const auto names = namesIn(from);
    if (!names || !makeDirectory(to, info)) return false;
    for (const std::string& name : *names) {
      if (!copyItem(from + "/" + name, to + "/" + name)) return false;
    }
    // Last: filling the directory changes its times, and its mode may forbid filling it.
    const Descriptor source(::open(from.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    const Descriptor target(::open(to.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    return source.valid() && target.valid() && copyMetadata(source.get(), target.get(), info, flags_);
  }

  copyfile_flags_t flags_;
  std::vector<Link> links_;
};

// A clone-style copy is a full, exclusive copy that does not follow its source.
copyfile_flags_t withImpliedFlags(copyfile_flags_t flags) {
  if ((flags & COPYFILE_CLONE) == 0) return flags;
  return flags | COPYFILE_EXCL | COPYFILE_NOFOLLOW_SRC | COPYFILE_STAT | COPYFILE_XATTR | COPYFILE_DATA;
}

int copyWithFlags(const std::string& from, const std::string& to, copyfile_flags_t given) {
  constexpr copyfile_flags_t kUnsupported =
      COPYFILE_MOVE | COPYFILE_UNLINK | COPYFILE_CHECK | COPYFILE_PACK | COPYFILE_UNPACK | COPYFILE_CLONE_FORCE;
  const copyfile_flags_t flags = withImpliedFlags(given);
  const bool recursive = (flags & COPYFILE_RECURSIVE) != 0;
  // A tree is only ever copied as it is: following links out of it is not simulated.
  if ((flags & kUnsupported) != 0 || (recursive && (flags & COPYFILE_NOFOLLOW_SRC) == 0)) {
    return resultOf(failWith(EINVAL));
  }
  Copier copier(flags);
  return resultOf(copier.copy(from, recursive ? copier.treeDestination(from, to) : to));
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
  if (from == nullptr || to == nullptr) return resultOf(failWith(EINVAL));
  if (const auto scripted = observe("copyfile", [&] { return describe(from, to, flags); })) {
    return resultOf(scripted->status == 0 || failWith(scripted->status));
  }
  return copyWithFlags(from, to, flags);
}
