#include "client/InputStream.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>

namespace halvo {

InputStream::InputStream() : descriptor_(STDIN_FILENO) {}

InputStream::InputStream(const std::string& path)
    : opened_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)), descriptor_(opened_.get()) {
  if (!opened_.valid()) error_ = errno;
}

std::optional<std::string> InputStream::read(std::size_t most) {
  if (error_ != 0) return std::nullopt;
  std::string text;
  std::array<char, 4096> buffer{};
  while (text.size() < most) {
    const ssize_t count = ::read(descriptor_, buffer.data(), std::min(buffer.size(), most - text.size()));
    if (count == 0) break;
    if (count != -1) {
      text.append(buffer.data(), static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      error_ = errno;
      return std::nullopt;
    }
  }
  return text;
}

bool InputStream::isFifo(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_fifo(path, error);
}

}  // namespace halvo
