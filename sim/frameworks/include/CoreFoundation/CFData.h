// Bytes that do not change.
#pragma once

#include <CoreFoundation/CFBase.h>

typedef const struct __CFData* CFDataRef;

extern "C" {

CFTypeID CFDataGetTypeID(void);
CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length);
CFIndex CFDataGetLength(CFDataRef theData);
const UInt8* CFDataGetBytePtr(CFDataRef theData);
void CFDataGetBytes(CFDataRef theData, CFRange range, UInt8* buffer);

}  // extern "C"
