// The C library's header with a Mac's ways of asking for attributes and folders.
#pragma once

#include_next <unistd.h>

// Where a user's temporary files lie, a name that confstr(3) of this C library does not know. Any other goes to it.
#define _CS_DARWIN_USER_TEMP_DIR 65537
#define confstr halvo_sim_confstr
extern "C" size_t halvo_sim_confstr(int name, char* buffer, size_t size);

// Only ATTR_CMN_FLAGS is answered, and only in full: a length and the flags, 32 bits each.
extern "C" int fgetattrlist(int descriptor, void* wanted, void* answer, size_t size, unsigned int options);
