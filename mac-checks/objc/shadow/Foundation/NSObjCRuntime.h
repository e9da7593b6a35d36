// The package leaves NS_UNAVAILABLE empty; here a call of such a method must not compile, as on a Mac. And it ends the
// process for an encoded type that cannot be read, where a Mac raises an exception.
#pragma once

#include_next <Foundation/NSObjCRuntime.h>

#undef NS_UNAVAILABLE
#define NS_UNAVAILABLE __attribute__((unavailable))

#ifndef NS_SWIFT_NAME
#define NS_SWIFT_NAME(name)
#endif

#define NSGetSizeAndAlignment HalvoDoubleGetSizeAndAlignment
extern "C" const char* HalvoDoubleGetSizeAndAlignment(const char* type, NSUInteger* size, NSUInteger* alignment);
