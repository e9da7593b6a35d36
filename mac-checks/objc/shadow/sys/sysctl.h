// The C library at hand has no such header any more: the one that the sources are read with has the Mac's form, on
// every 64-bit processor.
#pragma once

#include <sys/time.h>

#include "mac-checks/mach-o/libSystem/sys/sysctl.h"
