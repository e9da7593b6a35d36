#include "HalvoHelper/system/BoundedCopy.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <memory>
#include <span>

namespace halvo {
namespace {

using Buffer = std::array<std::byte, 1'048'576>;

bool writeAll(int descriptor, std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace

bool halvoCopyBounded(int from, int to, std::int64_t max) {
  // Not filled: nothing is written that was not read, and a small file touches one page of it.
  const auto memory = std::make_unique_for_overwrite<Buffer>();
  const std::span buffer(*memory);
  std::int64_t total = 0;
  while (true) {
    const ssize_t count = ::read(from, buffer.data(), buffer.size());
    if (count == 0) return true;
    if (count < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    total += count;
    if (total > max) return false;
    if (!writeAll(to, buffer.first(static_cast<std::size_t>(count)))) return false;
  }
}

}  // namespace halvo
