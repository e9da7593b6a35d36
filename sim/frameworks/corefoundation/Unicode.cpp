#include "sim/frameworks/corefoundation/Unicode.h"

#include <array>

namespace halvo::sim {
namespace {

constexpr char32_t kFirstSurrogate = 0xD800;
constexpr char32_t kFirstLowSurrogate = 0xDC00;
constexpr char32_t kLastSurrogate = 0xDFFF;
constexpr char32_t kFirstSupplementary = 0x10000;
constexpr char32_t kLastCodePoint = 0x10FFFF;

struct Form {
  unsigned char mask;
  unsigned char lead;
  std::size_t length;
  char32_t smallest;
};
constexpr std::array<Form, 4> kForms = {
    {{0x80, 0x00, 1, 0}, {0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, kFirstSupplementary}}};

const Form* formOf(unsigned char lead) {
  for (const Form& form : kForms) {
    if ((lead & form.mask) == form.lead) return &form;
  }
  return nullptr;
}

// Takes one code point from the front of `text`, which is not empty.
std::optional<char32_t> takeUTF8(std::string_view& text) {
  const auto lead = static_cast<unsigned char>(text.front());
  const Form* form = formOf(lead);
  if (form == nullptr || text.size() < form->length) return std::nullopt;
  char32_t value = lead & static_cast<unsigned char>(~form->mask);
  for (std::size_t i = 1; i < form->length; ++i) {
    const auto next = static_cast<unsigned char>(text[i]);
    if ((next & 0xC0U) != 0x80U) return std::nullopt;
    value = value << 6U | (next & 0x3FU);
  }
  const bool surrogate = value >= kFirstSurrogate && value <= kLastSurrogate;
  if (value < form->smallest || value > kLastCodePoint || surrogate) return std::nullopt;
  text.remove_prefix(form->length);
  return value;
}

void appendUTF16(std::u16string& text, char32_t value) {
  if (value < kFirstSupplementary) {
    text += static_cast<char16_t>(value);
    return;
  }
  const char32_t offset = value - kFirstSupplementary;
  text += static_cast<char16_t>(kFirstSurrogate + (offset >> 10U));
  text += static_cast<char16_t>(kFirstLowSurrogate + (offset & 0x3FFU));
}

std::optional<char32_t> takeUTF16(std::u16string_view& text) {
  const char32_t first = text.front();
  if (first < kFirstSurrogate || first > kLastSurrogate) {
    text.remove_prefix(1);
    return first;
  }
  if (first >= kFirstLowSurrogate || text.size() < 2) return std::nullopt;
  const char32_t second = text[1];
  if (second < kFirstLowSurrogate || second > kLastSurrogate) return std::nullopt;
  text.remove_prefix(2);
  return kFirstSupplementary + ((first - kFirstSurrogate) << 10U) + (second - kFirstLowSurrogate);
}

std::string encodeUTF8(char32_t value) {
  std::size_t length = 1;
  while (length < kForms.size() && value >= kForms[length].smallest) ++length;
  const Form& form = kForms[length - 1];
  std::string bytes(length, '\0');
  for (std::size_t i = length - 1; i > 0; --i) {
    bytes[i] = static_cast<char>(0x80U | (value & 0x3FU));
    value >>= 6U;
  }
  bytes[0] = static_cast<char>(form.lead | value);
  return bytes;
}

}  // namespace

std::optional<std::u16string> utf16FromUTF8(std::string_view text) {
  std::u16string units;
  while (!text.empty()) {
    const auto value = takeUTF8(text);
    if (!value) return std::nullopt;
    appendUTF16(units, *value);
  }
  return units;
}

ConvertedText utf8FromUTF16(std::u16string_view text, std::size_t maximumBytes, char lossByte) {
  ConvertedText result;
  const std::size_t total = text.size();
  while (!text.empty()) {
    const auto value = takeUTF16(text);
    if (!value && lossByte == 0) break;
    const std::string bytes = value ? encodeUTF8(*value) : std::string(1, lossByte);
    if (!value) text.remove_prefix(1);
    if (bytes.size() > maximumBytes - result.utf8.size()) break;
    result.utf8 += bytes;
    result.unitsConverted = total - text.size();
  }
  return result;
}

}  // namespace halvo::sim
