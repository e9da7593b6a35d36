// Text, counted in UTF-16 units.
#pragma once

#include <CoreFoundation/CFBase.h>

typedef UInt32 CFStringEncoding;

typedef enum CFStringBuiltInEncodings : CFStringEncoding {
  kCFStringEncodingUTF8 = 0x08000100,
} CFStringBuiltInEncodings;

extern "C" {

CFTypeID CFStringGetTypeID(void);
// Both answer NULL for ill-formed UTF-8.
CFStringRef CFStringCreateWithCString(CFAllocatorRef alloc, const char* cStr, CFStringEncoding encoding);
CFStringRef CFStringCreateWithBytes(CFAllocatorRef alloc, const UInt8* bytes, CFIndex numBytes,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation);
// Takes any UTF-16 units, halves of pairs that stand alone included.
CFStringRef CFStringCreateWithCharacters(CFAllocatorRef alloc, const UniChar* chars, CFIndex numChars);
CFIndex CFStringGetLength(CFStringRef theString);
Boolean CFStringGetCString(CFStringRef theString, char* buffer, CFIndex bufferSize, CFStringEncoding encoding);
// Answers how many UTF-16 units were converted; a null buffer asks for the size only. Stops at what the encoding cannot
// hold, or puts `lossByte` in its place if that is not 0.
CFIndex CFStringGetBytes(CFStringRef theString, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                         Boolean isExternalRepresentation, UInt8* buffer, CFIndex maxBufLen, CFIndex* usedBufLen);
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);

#ifndef __APPLE__
CFStringRef __CFStringMakeConstantString(const char* cStr);
#endif

}  // extern "C"

// Takes a string literal only; the result lives as long as the process and is not released.
#ifdef __APPLE__
#define CFSTR(cStr) ((CFStringRef)__builtin___CFStringMakeConstantString("" cStr ""))
#else
#define CFSTR(cStr) __CFStringMakeConstantString("" cStr "")
#endif
