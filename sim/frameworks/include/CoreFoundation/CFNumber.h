// Numbers and booleans: two different types, told apart by their type identifiers.
#pragma once

#include <CoreFoundation/CFBase.h>

typedef const struct __CFBoolean* CFBooleanRef;
typedef const struct __CFNumber* CFNumberRef;

typedef enum CFNumberType : CFIndex {
  kCFNumberSInt8Type = 1,
  kCFNumberSInt16Type = 2,
  kCFNumberSInt32Type = 3,
  kCFNumberSInt64Type = 4,
  kCFNumberFloat32Type = 5,
  kCFNumberFloat64Type = 6,
  kCFNumberCharType = 7,
  kCFNumberShortType = 8,
  kCFNumberIntType = 9,
  kCFNumberLongType = 10,
  kCFNumberLongLongType = 11,
  kCFNumberFloatType = 12,
  kCFNumberDoubleType = 13,
  kCFNumberCFIndexType = 14,
  kCFNumberNSIntegerType = 15,
  kCFNumberCGFloatType = 16,
} CFNumberType;

extern "C" {

extern const CFBooleanRef kCFBooleanTrue;
extern const CFBooleanRef kCFBooleanFalse;

CFTypeID CFBooleanGetTypeID(void);
Boolean CFBooleanGetValue(CFBooleanRef boolean);

CFTypeID CFNumberGetTypeID(void);
CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType theType, const void* valuePtr);
CFNumberType CFNumberGetType(CFNumberRef number);
Boolean CFNumberIsFloatType(CFNumberRef number);
// False when the value does not fit; the best attempt is stored either way.
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType, void* valuePtr);

}  // extern "C"
