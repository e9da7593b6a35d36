#include "HalvoHelper/system/RealPrivilegedFS.h"

#include <copyfile.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <utility>

#include "HalvoHelper/system/BoundedCopy.h"
#include "HalvoHelper/system/PathStrings.h"
#include "HalvoHelper/system/RemoveTree.h"
#include "HalvoHelper/system/UniqueDescriptor.h"
#include "HalvoHelper/text/Text.h"

namespace halvo {
namespace {

bool isDirectory(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// Whether anything has that name, a dangling link included.
bool isNamed(const std::string& path) {
  struct stat info {};
  return ::lstat(path.c_str(), &info) == 0;
}

// Whether what is there after a copy that failed with `error` can be the copy's. What was in its way is somebody
// else's; but of a directory, EEXIST says that something was in the way further down.
bool canBeHalfACopy(const std::string& copy, int error) {
  struct stat info {};
  return error != EEXIST || (::lstat(copy.c_str(), &info) == 0 && S_ISDIR(info.st_mode));
}

// The same path without trailing slashes.
std::string trimmed(const std::string& path) {
  return halvoAppendingPathComponent(halvoDeletingLastPathComponent(path), halvoLastPathComponent(path));
}

// Makes the directory and those above it; an existing directory is success. False on any error.
bool createDirectories(const std::string& path) {
  std::error_code error;
  std::filesystem::create_directories(path, error);
  return !error && isDirectory(path);
}

// Opens what an untrusted caller named. O_NOFOLLOW refuses a link as the last component, so that nobody reads
// root's files through us; O_NONBLOCK keeps a FIFO without a writer from holding the request for ever.
UniqueDescriptor openSource(const std::string& path) {
  UniqueDescriptor source(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
  struct stat info {};
  // The descriptor is judged, not the path: the path may name something else by now.
  const bool acceptable = source.valid() && ::fstat(source.get(), &info) == 0 && S_ISREG(info.st_mode) &&
                          info.st_size <= RealPrivilegedFS::stageFileMaxBytes;
  return acceptable ? std::move(source) : UniqueDescriptor();
}

// The time of the last change as seconds since 1970.
double seconds(const struct timespec& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

}  // namespace

bool RealPrivilegedFS::exists(const std::string& path) const {
  struct stat info {};
  return !halvoHoldsNul(path) && ::stat(path.c_str(), &info) == 0;
}

bool RealPrivilegedFS::remove(const std::string& path) const {
  if (halvoHoldsNul(path)) return false;
  return ::unlink(path.c_str()) == 0 || errno == ENOENT;
}

bool RealPrivilegedFS::removeTree(const std::string& path) const {
  if (halvoHoldsNul(path)) return false;
  if (!exists(path)) return true;
  return halvoRemoveTree(path) || !exists(path);
}

bool RealPrivilegedFS::copyTree(const std::string& source, const std::string& destination) const {
  if (halvoHoldsNul(source) || halvoHoldsNul(destination)) return false;
  if (exists(destination)) removeTree(destination);
  if (!createDirectories(halvoDeletingLastPathComponent(destination))) return false;

  // copyfile(3) would copy into a directory that is still there; the copy must replace it or fail.
  const std::string copy = trimmed(destination);
  if (isNamed(copy)) return false;
  // A tree that is copied into itself grows while it is read: the copy would end with the last free byte.
  if (copy.starts_with(trimmed(source) + "/")) return false;
  constexpr copyfile_flags_t kFlags =
      COPYFILE_ALL | COPYFILE_RECURSIVE | COPYFILE_NOFOLLOW | COPYFILE_EXCL | COPYFILE_CLONE;
  if (::copyfile(source.c_str(), copy.c_str(), nullptr, kFlags) == 0) return true;
  // Half a copy must not be taken for a whole one: a snapshot's items are copied back by their mere presence.
  if (canBeHalfACopy(copy, errno)) static_cast<void>(halvoRemoveTree(copy));
  return false;
}

bool RealPrivilegedFS::stageFile(const std::string& source, const std::string& destination) const {
  if (halvoHoldsNul(source) || halvoHoldsNul(destination)) return false;
  const UniqueDescriptor from = openSource(source);
  if (!from.valid()) return false;

  // O_EXCL: whatever is at the destination was not made by this run and is neither written nor removed.
  constexpr mode_t kOwnerOnly = 0600;
  UniqueDescriptor to(::open(destination.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kOwnerOnly));
  if (!to.valid()) return false;

  const bool copied = halvoCopyBounded(from.get(), to.get(), stageFileMaxBytes);
  // A file system may report a full disk only now.
  const bool closed = to.close();
  if (!copied || !closed) ::unlink(destination.c_str());
  return copied && closed;
}

bool RealPrivilegedFS::makeDir(const std::string& path) const {
  return !halvoHoldsNul(path) && (createDirectories(path) || exists(path));
}

std::vector<std::string> RealPrivilegedFS::entries(const std::string& path) const {
  if (halvoHoldsNul(path)) return {};
  std::vector<std::string> names;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(path, error), end; !error && entry != end; entry.increment(error)) {
    names.push_back(entry->path().filename().string());
  }
  return error ? std::vector<std::string>() : names;
}

std::optional<std::int64_t> RealPrivilegedFS::modifiedDaysAgo(const std::string& path) const {
  struct stat info {};
  if (halvoHoldsNul(path) || ::lstat(path.c_str(), &info) != 0) return std::nullopt;
  const std::chrono::duration<double> now = std::chrono::system_clock::now().time_since_epoch();
  const double days = (now.count() - seconds(info.st_mtimespec)) / 86'400.0;
  return static_cast<std::int64_t>(days);
}

bool RealPrivilegedFS::makePrivateDir(const std::string& path, int mode) const {
  if (halvoHoldsNul(path)) return false;
  const auto permissions = static_cast<mode_t>(mode);
  const std::string parent = halvoDeletingLastPathComponent(path);
  if (!parent.empty() && !createDirectories(parent)) return false;
  // Made with the narrow bits, so that there is no moment in which others could enter.
  if (::mkdir(path.c_str(), permissions) != 0 && errno != EEXIST) return false;
  // A directory from an earlier run may be wider; the umask may have narrowed a new one.
  return isDirectory(path) && ::chmod(path.c_str(), permissions) == 0;
}

}  // namespace halvo
