// What a piece of code must fulfil, written in the requirement language.
#pragma once

#include <Security/CSCommon.h>

extern "C" {

CFTypeID SecRequirementGetTypeID(void);
OSStatus SecRequirementCreateWithString(CFStringRef text, SecCSFlags flags, SecRequirementRef* requirement);

}  // extern "C"
