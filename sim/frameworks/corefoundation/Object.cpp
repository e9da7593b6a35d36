// What all objects share, and the plain ones: data, numbers and booleans.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

#include "sim/frameworks/corefoundation/Types.h"
#include "sim/frameworks/testing/Instrumentation.h"

namespace halvo::sim {
namespace {

std::atomic<std::int64_t> living{0};

}  // namespace

void countCreated() noexcept { living.fetch_add(1, std::memory_order_relaxed); }
void countDestroyed() noexcept { living.fetch_sub(1, std::memory_order_relaxed); }
std::int64_t countLiving() noexcept { return living.load(std::memory_order_relaxed); }

CFObject::~CFObject() {
  if (lifetime_ == Lifetime::counted) countDestroyed();
}

void CFObject::retain() const {
  if (lifetime_ == Lifetime::counted) references_.fetch_add(1, std::memory_order_relaxed);
}

void CFObject::release() const {
  if (lifetime_ == Lifetime::counted && references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

void abortWithReason(const char* reason) noexcept {
  static_cast<void>(std::fprintf(stderr, "simulated macOS: %s\n", reason));
  std::abort();
}

}  // namespace halvo::sim

using halvo::sim::abortWithReason;
using halvo::sim::objectAs;
using halvo::sim::objectOf;

namespace {

constinit halvo::sim::Constant<__CFBoolean> trueObject(true);
constinit halvo::sim::Constant<__CFBoolean> falseObject(false);

// The nearest integer below what can be represented: a cast of anything beyond would be undefined.
std::int64_t truncated(double value) {
  constexpr double kLimit = 9223372036854775808.0;
  if (std::isnan(value)) return 0;
  if (value >= kLimit) return std::numeric_limits<std::int64_t>::max();
  if (value < -kLimit) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(value);
}

// The integer, and whether it is the value exactly.
std::pair<std::int64_t, bool> asInteger(std::int64_t value) { return {value, true}; }
std::pair<std::int64_t, bool> asInteger(double value) {
  const std::int64_t whole = truncated(value);
  return {whole, static_cast<double>(whole) == value && whole != std::numeric_limits<std::int64_t>::max()};
}

template <typename T>
CFNumberRef numberAt(const void* value) {
  T content{};
  std::memcpy(&content, value, sizeof content);
  return new __CFNumber(content);
}

}  // namespace

extern "C" {

const CFAllocatorRef kCFAllocatorDefault = nullptr;

CFTypeID CFGetTypeID(CFTypeRef cf) {
  if (cf == nullptr) abortWithReason("CFGetTypeID was given a null reference");
  return objectOf(cf).type();
}

CFTypeRef CFRetain(CFTypeRef cf) {
  if (cf == nullptr) abortWithReason("CFRetain was given a null reference");
  objectOf(cf).retain();
  return cf;
}

void CFRelease(CFTypeRef cf) {
  if (cf == nullptr) abortWithReason("CFRelease was given a null reference");
  objectOf(cf).release();
}

const CFBooleanRef kCFBooleanTrue = &trueObject.object;
const CFBooleanRef kCFBooleanFalse = &falseObject.object;

CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex length) {
  if (halvo::sim::observe("CFDataCreate")) return nullptr;
  return length < 0 ? nullptr : new __CFData(std::vector<UInt8>(bytes, bytes + length));
}

CFTypeID CFBooleanGetTypeID(void) { return halvo::sim::kBooleanType; }

Boolean CFBooleanGetValue(CFBooleanRef boolean) {
  const auto* object = objectAs<__CFBoolean>(boolean, halvo::sim::kBooleanType);
  if (object == nullptr) abortWithReason("CFBooleanGetValue was given something that is not a boolean");
  return object->value ? 1 : 0;
}

CFTypeID CFNumberGetTypeID(void) { return halvo::sim::kNumberType; }

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType theType, const void* valuePtr) {
  if (theType == kCFNumberSInt64Type) return numberAt<std::int64_t>(valuePtr);
  if (theType == kCFNumberDoubleType) return numberAt<double>(valuePtr);
  abortWithReason("numbers are made here of 64-bit integers and of doubles only");
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType, void* valuePtr) {
  if (theType != kCFNumberSInt64Type) abortWithReason("only 64-bit integers are taken out of numbers here");
  const auto* object = objectAs<__CFNumber>(number, halvo::sim::kNumberType);
  if (object == nullptr) abortWithReason("CFNumberGetValue was given something that is not a number");
  const auto [value, exact] = std::visit([](auto content) { return asInteger(content); }, object->value);
  std::memcpy(valuePtr, &value, sizeof value);
  return exact ? 1 : 0;
}

}  // extern "C"
