// The types everything in CoreFoundation shares, and reference counting.
#pragma once

#include <stddef.h>
#include <stdint.h>

typedef unsigned char Boolean;
typedef unsigned char UInt8;
typedef uint16_t UniChar;
typedef int32_t SInt32;
typedef uint32_t UInt32;
typedef SInt32 OSStatus;

typedef signed long CFIndex;
typedef unsigned long CFTypeID;
typedef unsigned long CFOptionFlags;
typedef unsigned long CFHashCode;

typedef const void* CFTypeRef;
typedef const struct __CFString* CFStringRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef struct __CFBundle* CFBundleRef;
typedef struct __CFError* CFErrorRef;

typedef struct {
  CFIndex location;
  CFIndex length;
} CFRange;

static inline CFRange CFRangeMake(CFIndex location, CFIndex length) {
  CFRange range;
  range.location = location;
  range.length = length;
  return range;
}

extern "C" {

extern const CFAllocatorRef kCFAllocatorDefault;

CFTypeID CFGetTypeID(CFTypeRef cf);
CFTypeRef CFRetain(CFTypeRef cf);
// A null reference ends the process here as it does on a Mac.
void CFRelease(CFTypeRef cf);
Boolean CFEqual(CFTypeRef cf1, CFTypeRef cf2);

}  // extern "C"
