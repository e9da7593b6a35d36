#include "sim/frameworks/copyfile/Metadata.h"

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

namespace halvo::sim {
namespace {

std::array<timespec, 2> timesOf(const struct stat& info) { return {info.st_atim, info.st_mtim}; }

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

}  // namespace

bool copyMetadata(int from, int to, const struct stat& info, copyfile_flags_t flags) {
  constexpr mode_t kSetId = S_ISUID | S_ISGID;
  if ((flags & COPYFILE_XATTR) != 0) copyAttributes(from, to);
  if ((flags & COPYFILE_STAT) == 0) return true;
  // The owner first: changing it clears the set-id bits. Whoever is not root keeps the copy, and that is no error.
  static_cast<void>(::fchown(to, info.st_uid, info.st_gid) == 0);
  const bool losesSetId = (flags & COPYFILE_CLONE) != 0 && !S_ISDIR(info.st_mode);
  const mode_t mode = info.st_mode & ALLPERMS & (losesSetId ? ~kSetId : ~mode_t{0});
  return ::fchmod(to, mode) == 0 && ::futimens(to, timesOf(info).data()) == 0;
}

bool copyLinkMetadata(const char* link, const struct stat& info, copyfile_flags_t flags) {
  if ((flags & COPYFILE_STAT) == 0) return true;
  static_cast<void>(::lchown(link, info.st_uid, info.st_gid) == 0);
  return ::utimensat(AT_FDCWD, link, timesOf(info).data(), AT_SYMLINK_NOFOLLOW) == 0;
}

}  // namespace halvo::sim
