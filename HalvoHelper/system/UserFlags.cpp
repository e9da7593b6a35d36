#include "HalvoHelper/system/UserFlags.h"

#include <fcntl.h>
#include <sys/attr.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>

#include "HalvoHelper/system/UniqueDescriptor.h"

namespace halvo {
namespace {

// None where they cannot be read.
std::uint32_t flagsOf(int item) {
  struct attrlist wanted {};
  wanted.bitmapcount = ATTR_BIT_MAP_COUNT;
  wanted.commonattr = ATTR_CMN_FLAGS;
  struct {
    std::uint32_t length;
    std::uint32_t flags;
  } answer{};
  if (::fgetattrlist(item, &wanted, &answer, sizeof answer, 0) != 0) return 0;
  return answer.flags;
}

}  // namespace

bool halvoClearUserFlags(int item) {
  constexpr std::uint32_t kUser = UF_IMMUTABLE | UF_APPEND;
  constexpr std::uint32_t kSystem = SF_IMMUTABLE | SF_APPEND;
  const std::uint32_t flags = flagsOf(item);
  if ((flags & kUser) == 0 || (flags & kSystem) != 0) return false;
  return ::fchflags(item, flags & ~kUser) == 0;
}

bool halvoClearUserFlags(int directory, const std::string& name) {
  // A FIFO or a device is not opened: whoever is at its other end would notice. Changing flags by name instead would
  // change those of whatever has the name by then.
  struct stat info {};
  if (::fstatat(directory, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) return false;
  if (!S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode) && !S_ISLNK(info.st_mode)) return false;

  // O_SYMLINK opens a link itself, where O_NOFOLLOW would refuse. O_NONBLOCK, since the name may meanwhile stand for a
  // FIFO. What could not be opened has no flags.
  const UniqueDescriptor item(::openat(directory, name.c_str(), O_RDONLY | O_SYMLINK | O_NONBLOCK | O_CLOEXEC));
  return halvoClearUserFlags(item.get());
}

}  // namespace halvo
