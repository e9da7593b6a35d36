// Puts files and the process's file creation into the state that a test needs.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstdint>
#include <string>

namespace halvo {

class ScopedUmask {
 public:
  explicit ScopedUmask(mode_t mask) : before_(::umask(mask)) {}
  ScopedUmask(const ScopedUmask&) = delete;
  ScopedUmask& operator=(const ScopedUmask&) = delete;
  ~ScopedUmask() { ::umask(before_); }

 private:
  mode_t before_;
};

// Sets the time of the item's last modification, in the future if negative; the item's own if it is a link.
void setModifiedHoursAgo(const std::string& path, std::int64_t hours);

// Sets the times of the last access and modification exactly.
void setTimes(const std::string& path, timespec time);
[[nodiscard]] timespec modifiedAt(const std::string& path);

// Whether two times are the same to the nanosecond.
[[nodiscard]] bool sameTime(timespec a, timespec b);

}  // namespace halvo
