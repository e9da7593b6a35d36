// The objects behind the opaque references of the CoreFoundation headers.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "sim/frameworks/corefoundation/Object.h"

namespace halvo::sim {

inline constexpr CFTypeID kStringType = 7;
inline constexpr CFTypeID kDictionaryType = 18;
inline constexpr CFTypeID kDataType = 20;
inline constexpr CFTypeID kBooleanType = 21;
inline constexpr CFTypeID kNumberType = 22;
inline constexpr CFTypeID kCodeType = 300;
inline constexpr CFTypeID kRequirementType = 301;

// The text of a string object; nothing for an object of another type or a null reference.
std::optional<std::string> textOf(CFTypeRef reference);

// Creates a string object; null when `text` is not UTF-8.
CFStringRef createString(std::string_view text);

}  // namespace halvo::sim

struct __CFString : halvo::sim::CFObject {
  explicit __CFString(std::u16string units) : CFObject(halvo::sim::kStringType), text(std::move(units)) {}
  constexpr __CFString(Lifetime lifetime, std::u16string_view units)
      : CFObject(halvo::sim::kStringType, lifetime), text(units) {}
  // A string that is never counted and never destroyed.
  constexpr explicit __CFString(const char16_t* units) : __CFString(Lifetime::constant, units) {}
  bool equals(const CFObject& other) const override;
  std::u16string text;
};

struct __CFData : halvo::sim::CFObject {
  explicit __CFData(std::vector<UInt8> content) : CFObject(halvo::sim::kDataType), bytes(std::move(content)) {}
  std::vector<UInt8> bytes;
};

struct __CFBoolean : halvo::sim::CFObject {
  constexpr explicit __CFBoolean(bool state) : CFObject(halvo::sim::kBooleanType, Lifetime::constant), value(state) {}
  bool value;
};

struct __CFNumber : halvo::sim::CFObject {
  explicit __CFNumber(std::variant<std::int64_t, double> content) : CFObject(halvo::sim::kNumberType), value(content) {}
  std::variant<std::int64_t, double> value;
};

// Null callbacks are kept as empty ones: nothing is retained, and keys are compared by address.
struct __CFDictionary : halvo::sim::CFObject {
  __CFDictionary(const CFDictionaryKeyCallBacks* forKeys, const CFDictionaryValueCallBacks* forValues, bool canChange);
  ~__CFDictionary() override;
  // Adds or replaces.
  void set(const void* key, const void* value);
  // The place of the value; null when the key is absent.
  const void* const* find(const void* key) const;

  CFDictionaryKeyCallBacks keyCallBacks{};
  CFDictionaryValueCallBacks valueCallBacks{};
  bool isMutable;
  std::vector<std::pair<const void*, const void*>> entries;
};
