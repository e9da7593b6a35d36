// CoreFoundation, as far as this system uses it.
#pragma once

#include <stddef.h>
#include <stdint.h>

typedef unsigned char Boolean;
typedef unsigned char UInt8;
typedef uint16_t UniChar;
typedef uint32_t UInt32;
typedef int32_t OSStatus;

typedef signed long CFIndex;
typedef unsigned long CFTypeID;

typedef const void* CFTypeRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFBoolean* CFBooleanRef;
typedef const struct __CFData* CFDataRef;
typedef const struct __CFDictionary* CFDictionaryRef;
typedef const struct __CFNumber* CFNumberRef;
typedef const struct __CFString* CFStringRef;
typedef struct __CFBundle* CFBundleRef;
typedef struct __CFDictionary* CFMutableDictionaryRef;
typedef struct __CFError* CFErrorRef;

typedef struct {
  CFIndex location;
  CFIndex length;
} CFRange;

static inline CFRange CFRangeMake(CFIndex location, CFIndex length) { return {location, length}; }

typedef UInt32 CFStringEncoding;
enum : CFStringEncoding { kCFStringEncodingUTF8 = 0x08000100 };

typedef enum CFNumberType : CFIndex { kCFNumberSInt64Type = 4, kCFNumberDoubleType = 13 } CFNumberType;

// Without callbacks a dictionary neither retains nor compares by value.
typedef struct {
  CFIndex version;
  const void* (*retain)(CFAllocatorRef allocator, const void* value);
  void (*release)(CFAllocatorRef allocator, const void* value);
  CFStringRef (*copyDescription)(const void* value);
  Boolean (*equal)(const void* value1, const void* value2);
  unsigned long (*hash)(const void* value);
} CFDictionaryKeyCallBacks;

typedef struct {
  CFIndex version;
  const void* (*retain)(CFAllocatorRef allocator, const void* value);
  void (*release)(CFAllocatorRef allocator, const void* value);
  CFStringRef (*copyDescription)(const void* value);
  Boolean (*equal)(const void* value1, const void* value2);
} CFDictionaryValueCallBacks;

extern "C" {

extern const CFAllocatorRef kCFAllocatorDefault;
extern const CFBooleanRef kCFBooleanTrue;
extern const CFBooleanRef kCFBooleanFalse;
extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;

CFTypeID CFGetTypeID(CFTypeRef cf);
// A null reference ends the process here as it does on a Mac.
CFTypeRef CFRetain(CFTypeRef cf);
void CFRelease(CFTypeRef cf);

CFTypeID CFStringGetTypeID(void);
// The same object for the same text, never destroyed; for CFSTR alone.
CFStringRef __CFStringMakeConstantString(const char* cStr);
// Answers NULL for ill-formed UTF-8.
CFStringRef CFStringCreateWithBytes(CFAllocatorRef alloc, const UInt8* bytes, CFIndex numBytes,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation);
// Takes any UTF-16 units, halves of pairs that stand alone included.
CFStringRef CFStringCreateWithCharacters(CFAllocatorRef alloc, const UniChar* chars, CFIndex numChars);
CFIndex CFStringGetLength(CFStringRef theString);
// Answers how many UTF-16 units were converted; a null buffer asks for the size only. Stops at what the encoding cannot
// hold, or puts `lossByte` in its place if that is not 0.
CFIndex CFStringGetBytes(CFStringRef theString, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                         Boolean isExternalRepresentation, UInt8* buffer, CFIndex maxBufLen, CFIndex* usedBufLen);

CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length);
CFTypeID CFBooleanGetTypeID(void);
Boolean CFBooleanGetValue(CFBooleanRef boolean);
CFTypeID CFNumberGetTypeID(void);
CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType theType, const void* valuePtr);
// False when the value does not fit; the best attempt is stored either way.
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType, void* valuePtr);

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void** keys, const void** values, CFIndex numValues,
                                   const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks);
CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                 const CFDictionaryKeyCallBacks* keyCallBacks,
                                                 const CFDictionaryValueCallBacks* valueCallBacks);
void CFDictionarySetValue(CFMutableDictionaryRef theDict, const void* key, const void* value);
CFIndex CFDictionaryGetCount(CFDictionaryRef theDict);
void CFDictionaryGetKeysAndValues(CFDictionaryRef theDict, const void** keys, const void** values);

}  // extern "C"

#ifdef __APPLE__
#define CFSTR(cStr) ((CFStringRef)__builtin___CFStringMakeConstantString("" cStr ""))
#else
#define CFSTR(cStr) __CFStringMakeConstantString("" cStr "")
#endif
