#include <cmath>
#include <cstring>
#include <limits>

#include "sim/frameworks/corefoundation/Types.h"

using halvo::sim::abortWithReason;

namespace {

constinit halvo::sim::Constant<__CFBoolean> trueObject(true);
constinit halvo::sim::Constant<__CFBoolean> falseObject(false);

const __CFNumber& numberOf(CFNumberRef reference) {
  const auto* number = halvo::sim::objectAs<__CFNumber>(reference, halvo::sim::kNumberType);
  if (number == nullptr) abortWithReason("a number function was given something that is not a number");
  return *number;
}

// Calls `function` with a value of the C type behind `type`.
template <typename Function>
auto withType(CFNumberType type, Function function) {
  switch (type) {
    case kCFNumberSInt8Type:
    case kCFNumberCharType:
      return function(std::int8_t{});
    case kCFNumberSInt16Type:
    case kCFNumberShortType:
      return function(std::int16_t{});
    case kCFNumberSInt32Type:
    case kCFNumberIntType:
      return function(std::int32_t{});
    case kCFNumberFloat32Type:
    case kCFNumberFloatType:
      return function(float{});
    case kCFNumberFloat64Type:
    case kCFNumberDoubleType:
    case kCFNumberCGFloatType:
      return function(double{});
    case kCFNumberSInt64Type:
    case kCFNumberLongType:
    case kCFNumberLongLongType:
    case kCFNumberCFIndexType:
    case kCFNumberNSIntegerType:
      return function(std::int64_t{});
  }
  abortWithReason("a number type that does not exist was named");
}

// The nearest integer below what can be represented: a cast of anything beyond would be undefined.
std::int64_t truncated(double value) {
  constexpr double kLimit = 9223372036854775808.0;
  if (std::isnan(value)) return 0;
  if (value >= kLimit) return std::numeric_limits<std::int64_t>::max();
  if (value < -kLimit) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(value);
}

template <typename Target>
std::pair<Target, bool> convert(std::int64_t value) {
  const auto target = static_cast<Target>(value);
  if constexpr (std::is_floating_point_v<Target>) {
    return {target, truncated(static_cast<double>(target)) == value};
  } else {
    return {target, static_cast<std::int64_t>(target) == value};
  }
}

template <typename Target>
std::pair<Target, bool> convert(double value) {
  if constexpr (std::is_floating_point_v<Target>) {
    const auto target = static_cast<Target>(value);
    return {target, std::isnan(value) || static_cast<double>(target) == value};
  } else {
    const std::int64_t whole = truncated(value);
    const auto [target, fits] = convert<Target>(whole);
    return {target, fits && static_cast<double>(whole) == value && whole != std::numeric_limits<std::int64_t>::max()};
  }
}

}  // namespace

bool __CFNumber::equals(const CFObject& other) const {
  return std::visit(
      [](auto left, auto right) {
        return convert<double>(left).first == convert<double>(right).first &&
               convert<std::int64_t>(left) == convert<std::int64_t>(right);
      },
      value, static_cast<const __CFNumber&>(other).value);
}

extern "C" {

const CFBooleanRef kCFBooleanTrue = &trueObject.object;
const CFBooleanRef kCFBooleanFalse = &falseObject.object;

CFTypeID CFBooleanGetTypeID(void) { return halvo::sim::kBooleanType; }

Boolean CFBooleanGetValue(CFBooleanRef boolean) {
  const auto* object = halvo::sim::objectAs<__CFBoolean>(boolean, halvo::sim::kBooleanType);
  if (object == nullptr) abortWithReason("CFBooleanGetValue was given something that is not a boolean");
  return object->value ? 1 : 0;
}

CFTypeID CFNumberGetTypeID(void) { return halvo::sim::kNumberType; }

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType theType, const void* valuePtr) {
  return withType(theType, [&](auto sample) -> CFNumberRef {
    std::memcpy(&sample, valuePtr, sizeof sample);
    if constexpr (std::is_floating_point_v<decltype(sample)>)
      return new __CFNumber(theType, double{sample});
    else
      return new __CFNumber(theType, std::int64_t{sample});
  });
}

CFNumberType CFNumberGetType(CFNumberRef number) { return numberOf(number).numberType; }

Boolean CFNumberIsFloatType(CFNumberRef number) {
  return std::holds_alternative<double>(numberOf(number).value) ? 1 : 0;
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType, void* valuePtr) {
  const auto& value = numberOf(number).value;
  return withType(theType, [&](auto sample) -> Boolean {
    const auto [target, exact] = std::visit([](auto content) { return convert<decltype(sample)>(content); }, value);
    std::memcpy(valuePtr, &target, sizeof target);
    return exact ? 1 : 0;
  });
}

}  // extern "C"
