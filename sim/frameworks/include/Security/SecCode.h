// Running code: finding it and judging its signature. Out-parameters are written on success only.
#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <Security/CSCommon.h>

extern "C" {

extern const CFStringRef kSecGuestAttributeAudit;
extern const CFStringRef kSecGuestAttributePid;

CFTypeID SecCodeGetTypeID(void);
// An empty dictionary finds the kernel's own code instead of failing.
OSStatus SecCodeCopyGuestWithAttributes(SecCodeRef host, CFDictionaryRef attributes, SecCSFlags flags,
                                        SecCodeRef* guest);
OSStatus SecCodeCheckValidity(SecCodeRef code, SecCSFlags flags, SecRequirementRef requirement);
OSStatus SecCodeCheckValidityWithErrors(SecCodeRef code, SecCSFlags flags, SecRequirementRef requirement,
                                        CFErrorRef* errors);

}  // extern "C"
