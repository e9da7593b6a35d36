// A regular file that is read.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "HalvoHelper/system/UniqueDescriptor.h"

namespace halvo {

class InputFile {
 public:
  enum class Links { followed, refused };

  // Opens the file, following links unless the one at its place is refused. Does not wait, as for somebody who writes
  // into a FIFO: what is no regular file counts as not open.
  explicit InputFile(const std::string& path, Links links = Links::followed);

  [[nodiscard]] bool isOpen() const { return isOpen_; }

  // Why it is not open, or why reading failed: a value of errno, 0 for what is no regular file.
  [[nodiscard]] int error() const { return error_; }

  // What was known of the file when it was opened.
  [[nodiscard]] const struct stat& info() const { return info_; }

  // The bytes from `offset` to the end, `most` of them at most; nothing when reading fails.
  [[nodiscard]] std::optional<std::string> read(std::int64_t offset, std::size_t most);

 private:
  UniqueDescriptor descriptor_;
  bool isOpen_ = false;
  int error_ = 0;
  struct stat info_ {};
};

}  // namespace halvo
