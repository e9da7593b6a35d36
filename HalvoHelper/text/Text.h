// Reading text byte by byte and code point by code point, always the same way: no locale, no tables of the platform.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace halvo {

// One code point and the bytes that follow it. An ill-formed byte counts as one code point, U+FFFD.
struct CodePoint {
  char32_t value;
  std::string_view rest;
};
[[nodiscard]] CodePoint halvoDecodedCodePoint(std::string_view text);

// The same, and decided in place for ASCII: nearly all of what the system's tools print.
[[nodiscard]] inline CodePoint halvoFirstCodePoint(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  return first < 0x80 ? CodePoint{first, text.substr(1)} : halvoDecodedCodePoint(text);
}

// How many bytes at the front are well-formed UTF-8: all, or those before the first sequence that is ill-formed or not
// whole. Of a text that arrives in pieces the count may go on from there when the next piece has come.
[[nodiscard]] std::size_t halvoLeadingUTF8(std::string_view text);

// The code points with the Unicode property White_Space: blanks, tabs, every line end, no-break spaces and the rest.
[[nodiscard]] bool halvoIsWhitespace(char32_t codePoint);

// The text without the blanks (U+0020) and tabs (U+0009) at both ends.
[[nodiscard]] std::string_view halvoTrimBlanks(std::string_view text);

// Whether nothing but whitespace is in `text`.
[[nodiscard]] bool halvoIsAllWhitespace(std::string_view text);

// The non-empty pieces between the code points for which `isSeparator` holds.
[[nodiscard]] std::vector<std::string_view> halvoSplit(std::string_view text, bool (*isSeparator)(char32_t));

// A whole decimal number: an optional single sign, then ASCII digits, nothing else; nothing when it does not fit 64
// bits. Leading zeros do not matter.
[[nodiscard]] std::optional<std::int64_t> halvoParseDecimal(std::string_view text);

// Appends to `digits` the hexadecimal digits of a text that holds only those and whitespace, in upper case. Of any
// other text nothing is appended, and the answer is false. What would make `digits` longer than `most` is left out.
[[nodiscard]] bool halvoAppendHexDigits(std::string& digits, std::string_view text,
                                        std::size_t most = std::string::npos);

// Lower-cases A to Z only.
[[nodiscard]] std::string halvoLowercasedASCII(std::string_view text);

// A path with a NUL in it would mean one thing to us and another to the kernel, which stops reading there.
[[nodiscard]] bool halvoHoldsNul(std::string_view text);

}  // namespace halvo
