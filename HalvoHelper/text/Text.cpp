#include "HalvoHelper/text/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstring>

namespace halvo {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool isASCII(char c) { return static_cast<unsigned char>(c) < 0x80; }

struct LeadByte {
  std::size_t length;  // of the whole sequence; 0 when the byte cannot begin one
  char32_t bits;
  char32_t smallest;  // anything below is an overlong form
};

LeadByte classify(unsigned char byte) {
  if (byte < 0x80) return {1, byte, 0};
  if ((byte & 0xE0) == 0xC0) return {2, byte & 0x1FU, 0x80};
  if ((byte & 0xF0) == 0xE0) return {3, byte & 0x0FU, 0x800};
  if ((byte & 0xF8) == 0xF0) return {4, byte & 0x07U, 0x10000};
  return {0, 0, 0};
}

// The well-formed code point at the front of a text that is not empty, or nothing.
std::optional<CodePoint> decode(std::string_view text) {
  const LeadByte lead = classify(static_cast<unsigned char>(text.front()));
  if (lead.length == 0 || lead.length > text.size()) return std::nullopt;
  char32_t value = lead.bits;
  for (std::size_t i = 1; i < lead.length; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if ((byte & 0xC0) != 0x80) return std::nullopt;
    value = (value << 6) | (byte & 0x3FU);
  }
  const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
  if (value < lead.smallest || value > 0x10FFFF || surrogate) return std::nullopt;
  return CodePoint{value, text.substr(lead.length)};
}

// How many bytes at the front are ASCII, eight of them looked at at once.
std::size_t leadingASCII(std::string_view text) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080;
  std::uint64_t eight = 0;
  std::size_t count = 0;
  while (text.size() - count >= sizeof eight) {
    std::memcpy(&eight, text.data() + count, sizeof eight);
    if ((eight & kHighBits) != 0) break;
    count += sizeof eight;
  }
  while (count < text.size() && isASCII(text[count])) ++count;
  return count;
}

bool isBlank(char c) { return c == ' ' || c == '\t'; }

// Not reached: the compiler makes the table with these two.
consteval char upperHexDigit(std::size_t byte) {
  if ((byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'F')) return static_cast<char>(byte);
  return byte >= 'a' && byte <= 'f' ? static_cast<char>(byte - 'a' + 'A') : '\0';
}

consteval std::array<char, 256> upperHexDigits() {
  std::array<char, 256> digits{};
  for (std::size_t byte = 0; byte < digits.size(); ++byte) digits[byte] = upperHexDigit(byte);
  return digits;
}

// For each byte the digit that it is, in upper case, or 0. Whether a digit is a letter cannot be predicted, so a
// comparison would cost more than a look-up.
constexpr std::array<char, 256> kUpperHexDigits = upperHexDigits();

}  // namespace

CodePoint halvoDecodedCodePoint(std::string_view text) {
  return decode(text).value_or(CodePoint{kReplacement, text.substr(1)});
}

std::size_t halvoLeadingUTF8(std::string_view text) {
  std::string_view rest = text;
  while (true) {
    rest.remove_prefix(leadingASCII(rest));
    if (rest.empty()) return text.size();
    const auto next = decode(rest);
    if (!next) return text.size() - rest.size();
    rest = next->rest;
  }
}

bool halvoIsWhitespace(char32_t c) {
  if (c < 0x80) return c == ' ' || (c >= 0x09 && c <= 0x0D);
  constexpr std::array<char32_t, 8> single = {0x85, 0xA0, 0x1680, 0x2028, 0x2029, 0x202F, 0x205F, 0x3000};
  return (c >= 0x2000 && c <= 0x200A) || std::ranges::find(single, c) != single.end();
}

std::string_view halvoTrimBlanks(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

bool halvoIsAllWhitespace(std::string_view text) {
  while (!text.empty()) {
    const CodePoint next = halvoFirstCodePoint(text);
    if (!halvoIsWhitespace(next.value)) return false;
    text = next.rest;
  }
  return true;
}

std::vector<std::string_view> halvoSplit(std::string_view text, bool (*isSeparator)(char32_t)) {
  std::vector<std::string_view> pieces;
  std::string_view piece = text.substr(0, 0);
  while (!text.empty()) {
    const CodePoint next = halvoFirstCodePoint(text);
    if (isSeparator(next.value)) {
      if (!piece.empty()) pieces.push_back(piece);
      piece = next.rest.substr(0, 0);
    } else {
      piece = {piece.data(), static_cast<std::size_t>(next.rest.data() - piece.data())};
    }
    text = next.rest;
  }
  if (!piece.empty()) pieces.push_back(piece);
  return pieces;
}

std::optional<std::int64_t> halvoParseDecimal(std::string_view text) {
  // from_chars takes a minus but no plus, and would take the minus of "+-1" after our own plus was cut off.
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return std::nullopt;
  }
  std::int64_t value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end) return std::nullopt;
  return value;
}

bool halvoAppendHexDigits(std::string& digits, std::string_view text, std::size_t most) {
  const std::size_t before = digits.size();
  while (!text.empty()) {
    if (const char digit = kUpperHexDigits[static_cast<unsigned char>(text.front())]; digit != '\0') {
      if (digits.size() < most) digits += digit;
      text.remove_prefix(1);
      continue;
    }
    const CodePoint next = halvoFirstCodePoint(text);
    if (!halvoIsWhitespace(next.value)) {
      digits.resize(before);
      return false;
    }
    text = next.rest;
  }
  return true;
}

std::string halvoLowercasedASCII(std::string_view text) {
  std::string lowered(text);
  std::ranges::transform(lowered, lowered.begin(),
                         [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return lowered;
}

bool halvoHoldsNul(std::string_view text) { return text.find('\0') != std::string_view::npos; }

}  // namespace halvo
