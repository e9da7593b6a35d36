// Code signing and Authorization Services, as far as this system uses them. Out-parameters are written on success only.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <Security/Authorization.h>

typedef struct __SecCode* SecCodeRef;
typedef struct __SecRequirement* SecRequirementRef;

typedef uint32_t SecCSFlags;
enum : uint32_t { kSecCSDefaultFlags = 0 };

enum : OSStatus {
  errSecSuccess = 0,
  errSecCSInvalidObjectRef = -67071,
  errSecCSInvalidFlags = -67070,
  errSecCSObjectRequired = -67069,
  errSecCSUnsupportedGuestAttributes = -67067,
  errSecCSInvalidAttributeValues = -67066,
  errSecCSNoSuchCode = -67065,
  errSecCSUnsigned = -67062,
  errSecCSSignatureFailed = -67061,
  errSecCSReqInvalid = -67052,
  errSecCSReqFailed = -67050,
  errSecCSNotAHost = -67046,
  errSecCSStaticCodeChanged = -67034,
};

extern "C" {

extern const CFStringRef kSecGuestAttributeAudit;

// What a piece of code must fulfil, written in the requirement language.
OSStatus SecRequirementCreateWithString(CFStringRef text, SecCSFlags flags, SecRequirementRef* requirement);
// Finds running code. An empty dictionary finds the kernel's own instead of failing.
OSStatus SecCodeCopyGuestWithAttributes(SecCodeRef host, CFDictionaryRef attributes, SecCSFlags flags,
                                        SecCodeRef* guest);
OSStatus SecCodeCheckValidityWithErrors(SecCodeRef code, SecCSFlags flags, SecRequirementRef requirement,
                                        CFErrorRef* errors);

}  // extern "C"
