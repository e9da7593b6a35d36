// The C library's header with a Mac's ways of asking for attributes and folders.
#pragma once

#include_next <unistd.h>

// Where a user's temporary files lie. confstr(3) of this C library knows no such name, as a Mac's may fail to.
#define _CS_DARWIN_USER_TEMP_DIR 65537

// Only ATTR_CMN_FLAGS is answered, and only in full: a length and the flags, 32 bits each.
extern "C" int fgetattrlist(int descriptor, void* wanted, void* answer, size_t size, unsigned int options);
