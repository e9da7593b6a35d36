#include "HalvoHelper/testing/LockedItem.h"

#include <fcntl.h>
#include <sys/attr.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

namespace halvo {

LockedItem::LockedItem(const std::string& path, std::uint32_t flags)
    : item_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)), taken_(::fchflags(item_, flags) == 0) {}

LockedItem::LockedItem(LockedItem&& other) noexcept : item_(std::exchange(other.item_, -1)), taken_(other.taken_) {}

LockedItem::~LockedItem() {
  if (item_ < 0) return;
  ::fchflags(item_, 0);
  ::close(item_);
}

std::uint32_t LockedItem::flags() const {
  struct attrlist wanted {};
  wanted.bitmapcount = ATTR_BIT_MAP_COUNT;
  wanted.commonattr = ATTR_CMN_FLAGS;
  struct {
    std::uint32_t length;
    std::uint32_t flags;
  } answer{};
  ::fgetattrlist(item_, &wanted, &answer, sizeof answer, 0);
  return answer.flags;
}

}  // namespace halvo
