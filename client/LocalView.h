// What this program sees of the Mac by itself. Where the helper's reply stands for several causes, it tells which.
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace halvo {

// What is known about a request besides the reply.
struct Seen {
  bool manifestNamesVersion = true;
  bool productWasInstalled = true;  // before the request, a part of it at least
  bool stagingWasLeft = false;      // by an install that was broken off
  bool diskIsFull = false;          // after the request
  std::optional<std::string> faultOfBundle = std::nullopt;
};

// Looks below `root`, which is empty but for tests. What may not be looked at counts as the ordinary case.
class LocalView {
 public:
  explicit LocalView(std::string root = "") : root_(std::move(root)) {}

  [[nodiscard]] bool productIsInstalled() const;
  [[nodiscard]] bool stagingIsLeft() const;

  // Whether the disk that the system writes to has less than a mebibyte left.
  [[nodiscard]] bool diskIsFull() const;

 private:
  std::string root_;
};

}  // namespace halvo
