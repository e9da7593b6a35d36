// Copies one open file to another without ever writing more than a bound.
#pragma once

#include <cstdint>

namespace halvo {

// Copies from the current offset of `from` to its end, wherever that is by then: of a file that shrinks while it is
// copied, what was left. False on any read or write error, and as soon as more than `max` bytes were read: a file may
// grow as well. Blocks; uses one buffer of 1 MiB.
[[nodiscard]] bool halvoCopyBounded(int from, int to, std::int64_t max);

}  // namespace halvo
