#include <utf8.h>

#include <cstring>
#include <iterator>
#include <map>
#include <mutex>
#include <string>

#include "sim/frameworks/corefoundation/Types.h"
#include "sim/frameworks/testing/Instrumentation.h"

using halvo::sim::abortWithReason;
using halvo::sim::observe;

namespace {

// Nothing when `text` is not well-formed UTF-8: overlong forms, surrogates and values past U+10FFFF are refused.
std::optional<std::u16string> utf16FromUTF8(std::string_view text) {
  if (!utf8::is_valid(text.begin(), text.end())) return std::nullopt;
  std::u16string units;
  utf8::utf8to16(text.begin(), text.end(), std::back_inserter(units));
  return units;
}

bool isHighSurrogate(char16_t unit) { return (unit & 0xFC00U) == 0xD800U; }
bool isLowSurrogate(char16_t unit) { return (unit & 0xFC00U) == 0xDC00U; }

// How many units the character at the front of `text` has; 0 for half a pair that stands alone.
std::size_t unitsOfCharacter(std::u16string_view text) {
  if (isLowSurrogate(text.front())) return 0;
  if (!isHighSurrogate(text.front())) return 1;
  return text.size() > 1 && isLowSurrogate(text[1]) ? 2 : 0;
}

struct ConvertedText {
  std::string utf8;
  std::size_t unitsConverted = 0;
};

// Converts up to the first half of a pair that stands alone, unless there is a byte to put in its place, and as much as
// fits into `maximumBytes`.
ConvertedText utf8FromUTF16(std::u16string_view text, std::size_t maximumBytes = std::string::npos, char lossByte = 0) {
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

const __CFString& stringOf(CFStringRef reference) {
  const auto* string = halvo::sim::objectAs<__CFString>(reference, halvo::sim::kStringType);
  if (string == nullptr) abortWithReason("a string function was given something that is not a string");
  return *string;
}

}  // namespace

bool __CFString::equals(const CFObject& other) const { return text == static_cast<const __CFString&>(other).text; }

namespace halvo::sim {

std::optional<std::string> textOf(CFTypeRef reference) {
  const auto* string = objectAs<__CFString>(reference, kStringType);
  return string == nullptr ? std::nullopt : std::optional(utf8FromUTF16(string->text).utf8);
}

CFStringRef createString(std::string_view text) {
  auto units = utf16FromUTF8(text);
  return units ? new __CFString(std::move(*units)) : nullptr;
}

}  // namespace halvo::sim

extern "C" {

CFTypeID CFStringGetTypeID(void) { return halvo::sim::kStringType; }

CFStringRef __CFStringMakeConstantString(const char* cStr) {
  static std::mutex lock;
  static auto& strings = *new std::map<std::string, CFStringRef>;
  const std::scoped_lock guard(lock);
  CFStringRef& string = strings[cStr];
  if (string == nullptr) string = new __CFString(utf16FromUTF8(cStr).value_or(u"").c_str());
  return string;
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex numBytes, CFStringEncoding encoding,
                                    Boolean isExternalRepresentation) {
  if (observe("CFStringCreateWithBytes")) return nullptr;
  if (encoding != kCFStringEncodingUTF8) return nullptr;
  std::string_view text(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(numBytes));
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (isExternalRepresentation != 0 && text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  return halvo::sim::createString(text);
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* chars, CFIndex numChars) {
  std::u16string units;
  for (CFIndex i = 0; i < numChars; ++i) units += static_cast<char16_t>(chars[i]);
  return new __CFString(std::move(units));
}

CFIndex CFStringGetLength(CFStringRef theString) { return static_cast<CFIndex>(stringOf(theString).text.size()); }

CFIndex CFStringGetBytes(CFStringRef theString, CFRange range, CFStringEncoding encoding, UInt8 lossByte, Boolean,
                         UInt8* buffer, CFIndex maxBufLen, CFIndex* usedBufLen) {
  const __CFString& string = stringOf(theString);
  const auto length = static_cast<CFIndex>(string.text.size());
  if (range.location < 0 || range.length < 0 || range.length > length - range.location) {
    abortWithReason("CFStringGetBytes was given a range outside the string");
  }
  if (encoding != kCFStringEncodingUTF8) return 0;
  const auto part = std::u16string_view(string.text)
                        .substr(static_cast<std::size_t>(range.location), static_cast<std::size_t>(range.length));
  const std::size_t room = buffer == nullptr ? std::string::npos : static_cast<std::size_t>(maxBufLen);
  const auto converted = utf8FromUTF16(part, room, static_cast<char>(lossByte));
  if (buffer != nullptr) std::memcpy(buffer, converted.utf8.data(), converted.utf8.size());
  if (usedBufLen != nullptr) *usedBufLen = static_cast<CFIndex>(converted.utf8.size());
  return static_cast<CFIndex>(converted.unitsConverted);
}

}  // extern "C"
