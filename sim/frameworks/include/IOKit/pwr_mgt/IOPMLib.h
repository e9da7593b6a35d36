// Power assertions: what a process asks of the system's sleep.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOReturn.h>

typedef uint32_t IOPMAssertionID;
typedef uint32_t IOPMAssertionLevel;

enum : IOPMAssertionID { kIOPMNullAssertionID = 0 };
enum : IOPMAssertionLevel { kIOPMAssertionLevelOff = 0, kIOPMAssertionLevelOn = 255 };

// No sleep because nobody uses the system; lid, menu and battery still send it to sleep.
#define kIOPMAssertPreventUserIdleSystemSleep CFSTR("PreventUserIdleSystemSleep")

extern "C" {

// An assertion that is not released ends with its process.
IOReturn IOPMAssertionCreateWithName(CFStringRef AssertionType, IOPMAssertionLevel AssertionLevel,
                                     CFStringRef AssertionName, IOPMAssertionID* AssertionID);
IOReturn IOPMAssertionRelease(IOPMAssertionID AssertionID);

}  // extern "C"
