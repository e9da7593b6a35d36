// A JSON text made ready for the platform's reader.
#pragma once

#include <string>
#include <string_view>

namespace halvo {

// The same text with numbers that come through a reader as they are, also through one that makes doubles of those with
// a point or many digits: 6.0 becomes 6, and 6.00000000000000000001 becomes 0.5, which is as little an integer. What a
// reader refuses stays: texts that are no numbers, and numbers beyond every double.
[[nodiscard]] std::string withExactNumbers(std::string_view json);

}  // namespace halvo
