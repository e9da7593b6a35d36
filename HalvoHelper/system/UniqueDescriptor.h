// Owns one file descriptor.
#pragma once

#include <unistd.h>

#include <utility>

namespace halvo {

class UniqueDescriptor {
 public:
  UniqueDescriptor() = default;
  explicit UniqueDescriptor(int descriptor) : descriptor_(descriptor) {}
  UniqueDescriptor(UniqueDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  UniqueDescriptor& operator=(UniqueDescriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  UniqueDescriptor(const UniqueDescriptor&) = delete;
  UniqueDescriptor& operator=(const UniqueDescriptor&) = delete;
  ~UniqueDescriptor() { close(); }

  [[nodiscard]] bool valid() const { return descriptor_ >= 0; }
  [[nodiscard]] int get() const { return descriptor_; }

  // Gives the descriptor up to an owner of another kind.
  [[nodiscard]] int release() { return std::exchange(descriptor_, -1); }

  // Closes now. False when closing reports an error, such as data that could not be written after all.
  bool close() {
    const int descriptor = std::exchange(descriptor_, -1);
    return descriptor < 0 || ::close(descriptor) == 0;
  }

 private:
  int descriptor_ = -1;
};

}  // namespace halvo
