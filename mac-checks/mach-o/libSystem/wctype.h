// The one kind of wide character that libc++'s headers ask about.
#pragma once

#include "darwin/wide.h"

extern "C" {

int iswspace(wint_t character);

}  // extern "C"
