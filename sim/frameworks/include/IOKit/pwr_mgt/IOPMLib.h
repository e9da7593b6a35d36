// Power assertions: what a process asks of the system's sleep.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

typedef int IOReturn;

enum : IOReturn {
  kIOReturnSuccess = 0,
  kIOReturnBadArgument = -536870206,
  kIOReturnNotFound = -536870160,
};

typedef uint32_t IOPMAssertionID;
typedef uint32_t IOPMAssertionLevel;

enum : IOPMAssertionID { kIOPMNullAssertionID = 0 };
enum : IOPMAssertionLevel { kIOPMAssertionLevelOn = 255 };

// No sleep because nobody uses the system; lid, menu and battery still send it to sleep.
#define kIOPMAssertPreventUserIdleSystemSleep CFSTR("PreventUserIdleSystemSleep")

extern "C" {

// An assertion that is not released ends with its process.
IOReturn IOPMAssertionCreateWithName(CFStringRef AssertionType, IOPMAssertionLevel AssertionLevel,
                                     CFStringRef AssertionName, IOPMAssertionID* AssertionID);
IOReturn IOPMAssertionRelease(IOPMAssertionID AssertionID);

}  // extern "C"
