// A Mac's flags of files over those of Linux: the kernel refuses what it would refuse on a Mac. Linux has one kind of
// each flag; an extended attribute says whose it is. A flag without a word about it is the system's.
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/attr.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <string>

#include "HalvoHelper/system/UniqueDescriptor.h"

namespace halvo::sim {
namespace {

constexpr const char* kOwners = "user.halvo-sim.flags";
constexpr std::uint32_t kImmutable = UF_IMMUTABLE | SF_IMMUTABLE;
constexpr std::uint32_t kAppend = UF_APPEND | SF_APPEND;
constexpr std::uint32_t kSystem = SF_IMMUTABLE | SF_APPEND;

int failWith(int error) {
  errno = error;
  return -1;
}

// Opens the item of a descriptor again, for reading: through O_SYMLINK nothing can be asked. Links and special files
// have no flags here.
class Item {
 public:
  explicit Item(int descriptor) {
    struct stat info {};
    if (::fstat(descriptor, &info) != 0) return;
    owner_ = info.st_uid;
    errno = ENOTSUP;
    if (!S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode)) return;
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    file_ = UniqueDescriptor(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  }
  [[nodiscard]] bool valid() const { return file_.valid(); }
  [[nodiscard]] bool isMine() const { return ::geteuid() == 0 || ::geteuid() == owner_; }

  // 0 where the file system has none.
  [[nodiscard]] std::uint32_t flags() const {
    const auto kernel = kernelFlags();
    std::uint32_t owners = 0;
    if (::fgetxattr(file_.get(), kOwners, &owners, sizeof owners) != sizeof owners) owners = 0;
    return part(kernel & FS_IMMUTABLE_FL, owners & kImmutable, SF_IMMUTABLE) |
           part(kernel & FS_APPEND_FL, owners & kAppend, SF_APPEND);
  }

  // The attribute can only be written while neither flag is set.
  bool setFlags(std::uint32_t flags) const {
    const int others = kernelFlags() & ~(FS_IMMUTABLE_FL | FS_APPEND_FL);
    const int locks = ((flags & kImmutable) != 0 ? FS_IMMUTABLE_FL : 0) | ((flags & kAppend) != 0 ? FS_APPEND_FL : 0);
    return setKernelFlags(others) && ::fsetxattr(file_.get(), kOwners, &flags, sizeof flags, 0) == 0 &&
           setKernelFlags(others | locks);
  }

 private:
  static std::uint32_t part(int kernel, std::uint32_t owners, std::uint32_t system) {
    if (kernel == 0) return 0;
    return owners != 0 ? owners : system;
  }

  int kernelFlags() const {
    int flags = 0;
    return ::ioctl(file_.get(), FS_IOC_GETFLAGS, &flags) == 0 ? flags : 0;
  }

  bool setKernelFlags(int flags) const { return ::ioctl(file_.get(), FS_IOC_SETFLAGS, &flags) == 0; }

  UniqueDescriptor file_;
  uid_t owner_ = 0;
};

}  // namespace
}  // namespace halvo::sim

extern "C" int fgetattrlist(int descriptor, void* wanted, void* answer, size_t size, unsigned int options) {
  using namespace halvo::sim;
  const auto* list = static_cast<const struct attrlist*>(wanted);
  if (list->bitmapcount != ATTR_BIT_MAP_COUNT || list->commonattr != ATTR_CMN_FLAGS || options != 0) {
    return failWith(EINVAL);
  }
  auto* words = static_cast<std::uint32_t*>(answer);
  if (size < 2 * sizeof *words) return failWith(ERANGE);
  const Item item(descriptor);
  if (!item.valid() && errno != ENOTSUP) return -1;
  words[0] = 2 * sizeof *words;
  words[1] = item.valid() ? item.flags() : 0;
  return 0;
}

extern "C" int fchflags(int descriptor, uint32_t flags) {
  using namespace halvo::sim;
  if ((flags & ~(kImmutable | kAppend)) != 0) return failWith(ENOTSUP);
  const Item item(descriptor);
  if (!item.valid()) return -1;
  const bool systemsChange = ((item.flags() ^ flags) & kSystem) != 0;
  if (!item.isMine() || (systemsChange && ::geteuid() != 0)) return failWith(EPERM);
  return item.setFlags(flags) ? 0 : -1;
}
