#include "platform/mac/UnicodeText.h"

#include <cstddef>

namespace halvo {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct Decoded {
  char32_t value;
  std::size_t length;
  bool wellFormed;
};

constexpr Decoded kIllFormed{kReplacement, 1, false};

std::size_t sequenceLength(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) return 2;
  if (lead >= 0xE0 && lead <= 0xEF) return 3;
  if (lead >= 0xF0 && lead <= 0xF4) return 4;
  return 0;
}

bool isSurrogate(char32_t value) { return value >= 0xD800 && value <= 0xDFFF; }

// The first code point of `text`, which is not empty.
Decoded decode(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  const std::size_t length = sequenceLength(lead);
  if (length == 1) return {lead, 1, true};
  if (length == 0 || text.size() < length) return kIllFormed;
  char32_t value = lead & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if ((byte & 0xC0U) != 0x80U) return kIllFormed;
    value = (value << 6U) | (byte & 0x3FU);
  }
  const bool overlong = (length == 3 && value < 0x800) || (length == 4 && value < 0x10000);
  if (overlong || isSurrogate(value) || value > 0x10FFFF) return kIllFormed;
  return {value, length, true};
}

void appendUTF8(std::string& text, char32_t value) {
  const auto append = [&text](char32_t byte) { text.push_back(static_cast<char>(static_cast<unsigned char>(byte))); };
  if (value < 0x80) return append(value);
  if (value < 0x800) {
    append(0xC0U | (value >> 6U));
  } else if (value < 0x10000) {
    append(0xE0U | (value >> 12U));
    append(0x80U | ((value >> 6U) & 0x3FU));
  } else {
    append(0xF0U | (value >> 18U));
    append(0x80U | ((value >> 12U) & 0x3FU));
    append(0x80U | ((value >> 6U) & 0x3FU));
  }
  append(0x80U | (value & 0x3FU));
}

bool isHighSurrogate(std::uint16_t unit) { return (unit & 0xFC00U) == 0xD800U; }
bool isLowSurrogate(std::uint16_t unit) { return (unit & 0xFC00U) == 0xDC00U; }

}  // namespace

bool isWellFormedUTF8(std::string_view text) {
  while (!text.empty()) {
    const Decoded next = decode(text);
    if (!next.wellFormed) return false;
    text.remove_prefix(next.length);
  }
  return true;
}

std::vector<std::uint16_t> utf16FromUTF8(std::string_view text) {
  std::vector<std::uint16_t> units;
  units.reserve(text.size());
  while (!text.empty()) {
    const Decoded next = decode(text);
    text.remove_prefix(next.length);
    if (next.value < 0x10000) {
      units.push_back(static_cast<std::uint16_t>(next.value));
    } else {
      units.push_back(static_cast<std::uint16_t>(0xD800U + ((next.value - 0x10000U) >> 10U)));
      units.push_back(static_cast<std::uint16_t>(0xDC00U + ((next.value - 0x10000U) & 0x3FFU)));
    }
  }
  return units;
}

std::string utf8FromUTF16(std::span<const std::uint16_t> units) {
  std::string text;
  text.reserve(units.size());
  for (std::size_t i = 0; i < units.size(); ++i) {
    char32_t value = units[i];
    if (isHighSurrogate(units[i]) && i + 1 < units.size() && isLowSurrogate(units[i + 1])) {
      value = 0x10000U + ((value - 0xD800U) << 10U) + (units[i + 1] - 0xDC00U);
      ++i;
    } else if (isSurrogate(value)) {
      value = kReplacement;
    }
    appendUTF8(text, value);
  }
  return text;
}

}  // namespace halvo
