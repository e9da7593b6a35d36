// The disk as a reader sees it who trusts nothing on it: no link is followed below the places that only root can
// change, nothing is waited for, nothing is read without bound.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "client/doctor/Examination.h"

namespace halvo {

// The bytes of a regular file; for anything else that is there the sight is `present`, and there are none.
struct Contents {
  Sight sight = Sight::absent;
  std::string bytes;
};

struct Names {
  Sight sight = Sight::absent;
  std::vector<std::string> names;
};

struct TreeSize {
  std::int64_t bytes = 0;
  bool isAll = true;
};

// Paths are absolute. Looks below `root`, which is empty but for tests.
class Disk {
 public:
  explicit Disk(std::string root = "") : root_(std::move(root)) {}

  [[nodiscard]] Item look(const std::string& path) const;

  // The file that lies `below` a folder, such as "Contents/Info.plist", or at `path` itself when that is empty; of one
  // that is longer than `most` the first bytes, or the last.
  [[nodiscard]] Contents head(const std::string& path, std::string_view below, std::size_t most) const;
  [[nodiscard]] Contents tail(const std::string& path, std::size_t most) const;

  // What a folder holds, at most that many names of it, in no order.
  [[nodiscard]] Names names(const std::string& folder, std::size_t most) const;

  // The bytes of the files in a folder and below. Ends early in a tree that is deeper or larger than any honest one.
  [[nodiscard]] TreeSize sizeOf(const std::string& folder) const;

 private:
  std::string root_;
};

}  // namespace halvo
