#include "client/InputFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace halvo {

InputFile::InputFile(const std::string& path, Links links)
    : descriptor_(
          ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | (links == Links::refused ? O_NOFOLLOW : 0))) {
  if (!descriptor_.valid() || ::fstat(descriptor_.get(), &info_) != 0) {
    error_ = errno;
  } else {
    isOpen_ = S_ISREG(info_.st_mode);
  }
}

std::optional<std::string> InputFile::read(std::int64_t offset, std::size_t most) {
  std::string text(most, '\0');
  std::size_t length = 0;
  while (length < most) {
    const ssize_t count =
        ::pread(descriptor_.get(), text.data() + length, most - length, offset + static_cast<std::int64_t>(length));
    if (count == 0) break;
    if (count != -1) {
      length += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      error_ = errno;
      return std::nullopt;
    }
  }
  text.resize(length);
  return text;
}

}  // namespace halvo
