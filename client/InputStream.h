// What is read from its beginning to its end once: standard input, a FIFO.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "HalvoHelper/system/UniqueDescriptor.h"

namespace halvo {

class InputStream {
 public:
  // Standard input, which stays open.
  InputStream();

  // Opens what lies there, following links. Blocks until somebody writes, if it is a FIFO.
  explicit InputStream(const std::string& path);

  // Why it is not open, or why reading failed: a value of errno, otherwise 0.
  [[nodiscard]] int error() const { return error_; }

  // Everything to the end, `most` bytes at most; nothing when it is not open or reading fails. Blocks until then.
  [[nodiscard]] std::optional<std::string> read(std::size_t most);

  // Whether a FIFO lies there, or a link leads to one.
  [[nodiscard]] static bool isFifo(const std::string& path);

 private:
  UniqueDescriptor opened_;
  int descriptor_;  // of opened_ or of standard input
  int error_ = 0;
};

}  // namespace halvo
