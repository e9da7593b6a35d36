#include "HalvoHelper/testing/FileState.h"

#include <fcntl.h>

#include <array>
#include <cerrno>
#include <ctime>
#include <system_error>

namespace halvo {
namespace {

struct stat statusOf(const std::string& path) {
  struct stat info {};
  if (::lstat(path.c_str(), &info) != 0) throw std::system_error(errno, std::generic_category(), path);
  return info;
}

}  // namespace

void setModifiedHoursAgo(const std::string& path, std::int64_t hours) {
  setTimes(path, {static_cast<std::time_t>(std::time(nullptr) - hours * 3600), 0});
}

void setTimes(const std::string& path, timespec time) {
  const std::array<timespec, 2> times = {time, time};
  if (::utimensat(AT_FDCWD, path.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) != 0) {
    throw std::system_error(errno, std::generic_category(), path);
  }
}

timespec modifiedAt(const std::string& path) { return statusOf(path).st_mtimespec; }

bool sameTime(timespec a, timespec b) { return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec; }

}  // namespace halvo
