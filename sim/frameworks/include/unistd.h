// The C library's header with a Mac's way of asking for attributes.
#pragma once

#include_next <unistd.h>

// Only ATTR_CMN_FLAGS is answered, and only in full: a length and the flags, 32 bits each.
extern "C" int fgetattrlist(int descriptor, void* wanted, void* answer, size_t size, unsigned int options);
