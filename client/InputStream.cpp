#include "client/InputStream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace halvo {

InputStream::InputStream() : descriptor_(STDIN_FILENO), closes_(false) {}

InputStream::InputStream(const std::string& path)
    : descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)), closes_(true) {
  if (descriptor_ < 0) error_ = errno;
}

InputStream::~InputStream() {
  if (closes_ && descriptor_ >= 0) ::close(descriptor_);
}

std::optional<std::string> InputStream::read(std::size_t most) {
  if (error_ != 0) return std::nullopt;
  std::string text;
  std::array<char, 4096> buffer{};
  while (text.size() < most) {
    const ssize_t count = ::read(descriptor_, buffer.data(), std::min(buffer.size(), most - text.size()));
    if (count == 0) break;
    if (count > 0) {
      text.append(buffer.data(), static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      error_ = errno;
      return std::nullopt;
    }
  }
  return text;
}

bool InputStream::isFifo(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 && S_ISFIFO(info.st_mode);
}

}  // namespace halvo
