// A file or directory with flags that keep it from being removed.
#pragma once

#include <cstdint>
#include <string>

namespace halvo {

// Keeps the item open, so that its flags can be asked for and taken back wherever it is by then.
class LockedItem {
 public:
  // Takes the flags of chflags(2), such as UF_IMMUTABLE.
  LockedItem(const std::string& path, std::uint32_t flags);
  LockedItem(LockedItem&& other) noexcept;
  LockedItem& operator=(LockedItem&&) = delete;
  LockedItem(const LockedItem&) = delete;
  LockedItem& operator=(const LockedItem&) = delete;
  ~LockedItem();

  // Whether the file system has such flags and this process may set them.
  [[nodiscard]] bool taken() const { return taken_; }
  [[nodiscard]] std::uint32_t flags() const;

 private:
  int item_;
  bool taken_;
};

}  // namespace halvo
