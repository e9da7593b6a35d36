// The two encodings of a CFString: UTF-16 inside, UTF-8 outside.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace halvo::sim {

// Nothing when `text` is not well-formed UTF-8: overlong forms, surrogates and values past U+10FFFF are refused.
std::optional<std::u16string> utf16FromUTF8(std::string_view text);

struct ConvertedText {
  std::string utf8;
  std::size_t unitsConverted = 0;
};

// Converts up to the first half of a pair that stands alone, unless there is a byte to put in its place, and as much as
// fits into `maximumBytes`.
ConvertedText utf8FromUTF16(std::u16string_view text, std::size_t maximumBytes = std::string::npos, char lossByte = 0);

}  // namespace halvo::sim
