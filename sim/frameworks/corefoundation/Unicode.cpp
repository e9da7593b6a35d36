#include "sim/frameworks/corefoundation/Unicode.h"

#include <utf8.h>

#include <iterator>

namespace halvo::sim {
namespace {

bool isHighSurrogate(char16_t unit) { return (unit & 0xFC00U) == 0xD800U; }
bool isLowSurrogate(char16_t unit) { return (unit & 0xFC00U) == 0xDC00U; }

// How many units the character at the front of `text` has; 0 for half a pair that stands alone.
std::size_t unitsOfCharacter(std::u16string_view text) {
  if (isLowSurrogate(text.front())) return 0;
  if (!isHighSurrogate(text.front())) return 1;
  return text.size() > 1 && isLowSurrogate(text[1]) ? 2 : 0;
}

}  // namespace

std::optional<std::u16string> utf16FromUTF8(std::string_view text) {
  if (!utf8::is_valid(text.begin(), text.end())) return std::nullopt;
  std::u16string units;
  utf8::utf8to16(text.begin(), text.end(), std::back_inserter(units));
  return units;
}

ConvertedText utf8FromUTF16(std::u16string_view text, std::size_t maximumBytes, char lossByte) {
  ConvertedText result;
  while (!text.empty()) {
    const std::size_t units = unitsOfCharacter(text);
    if (units == 0 && lossByte == 0) break;
    std::string bytes;
    if (units == 0) {
      bytes = lossByte;
    } else {
      utf8::utf16to8(text.begin(), text.begin() + units, std::back_inserter(bytes));
    }
    if (bytes.size() > maximumBytes - result.utf8.size()) break;
    const std::size_t taken = units == 0 ? 1 : units;
    result.utf8 += bytes;
    result.unitsConverted += taken;
    text.remove_prefix(taken);
  }
  return result;
}

}  // namespace halvo::sim
