// Draws values from an input, front to back. An input that is used up gives zeros and empty texts, so that every input
// means something.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace halvo::fuzz {

class Input {
 public:
  explicit Input(std::string_view bytes) : left_(bytes) {}

  [[nodiscard]] bool empty() const { return left_.empty(); }

  unsigned byte() {
    if (left_.empty()) return 0;
    const auto value = static_cast<unsigned char>(left_.front());
    left_.remove_prefix(1);
    return value;
  }

  bool flag() { return byte() % 2 == 1; }

  // Below `count`, which is at most 256.
  std::size_t index(std::size_t count) { return byte() % count; }

  // Up to the next bar, which is taken as well: none of the languages that are read here gives it a meaning.
  std::string text() {
    const std::size_t end = std::min(left_.find('|'), left_.size());
    std::string drawn(left_.substr(0, end));
    left_.remove_prefix(std::min(end + 1, left_.size()));
    return drawn;
  }

  std::string rest() {
    std::string drawn(left_);
    left_ = {};
    return drawn;
  }

 private:
  std::string_view left_;
};

}  // namespace halvo::fuzz
