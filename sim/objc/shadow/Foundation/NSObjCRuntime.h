// The package leaves NS_UNAVAILABLE empty; here a call of such a method must not compile, as on a Mac.
#pragma once

#include_next <Foundation/NSObjCRuntime.h>

#undef NS_UNAVAILABLE
#define NS_UNAVAILABLE __attribute__((unavailable))
