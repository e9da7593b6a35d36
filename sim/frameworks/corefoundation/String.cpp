#include <cstring>
#include <map>
#include <mutex>

#include "sim/frameworks/corefoundation/Types.h"
#include "sim/frameworks/corefoundation/Unicode.h"
#include "sim/frameworks/testing/Instrumentation.h"

using halvo::sim::abortWithReason;
using halvo::sim::observe;

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

namespace {

const __CFString& stringOf(CFStringRef reference) {
  const auto* string = halvo::sim::objectAs<__CFString>(reference, halvo::sim::kStringType);
  if (string == nullptr) abortWithReason("a string function was given something that is not a string");
  return *string;
}

}  // namespace

extern "C" {

CFTypeID CFStringGetTypeID(void) { return halvo::sim::kStringType; }

CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* cStr, CFStringEncoding encoding) {
  if (observe("CFStringCreateWithCString")) return nullptr;
  return encoding == kCFStringEncodingUTF8 ? halvo::sim::createString(cStr) : nullptr;
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

Boolean CFStringGetCString(CFStringRef theString, char* buffer, CFIndex bufferSize, CFStringEncoding encoding) {
  const __CFString& string = stringOf(theString);
  const auto converted = halvo::sim::utf8FromUTF16(string.text);
  if (encoding != kCFStringEncodingUTF8 || converted.unitsConverted != string.text.size()) return 0;
  if (static_cast<CFIndex>(converted.utf8.size()) >= bufferSize) return 0;
  std::memcpy(buffer, converted.utf8.c_str(), converted.utf8.size() + 1);
  return 1;
}

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
  const auto converted = halvo::sim::utf8FromUTF16(part, room, static_cast<char>(lossByte));
  if (buffer != nullptr) std::memcpy(buffer, converted.utf8.data(), converted.utf8.size());
  if (usedBufLen != nullptr) *usedBufLen = static_cast<CFIndex>(converted.utf8.size());
  return static_cast<CFIndex>(converted.unitsConverted);
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding) {
  constexpr CFIndex kBytesPerUnit = 3;
  return encoding == kCFStringEncodingUTF8 ? length * kBytesPerUnit : -1;
}

CFStringRef __CFStringMakeConstantString(const char* cStr) {
  // Neither the table nor its strings are ever destroyed: threads may still use them while the process exits.
  static auto& strings = *new std::map<std::string, CFStringRef, std::less<>>;
  static auto& mutex = *new std::mutex;
  const std::lock_guard lock(mutex);
  const auto found = strings.find(std::string_view(cStr));
  if (found != strings.end()) return found->second;
  const auto units = halvo::sim::utf16FromUTF8(cStr);
  if (!units) abortWithReason("CFSTR was given text that is not UTF-8");
  return strings.emplace(cStr, new __CFString(units->c_str())).first->second;
}

}  // extern "C"
