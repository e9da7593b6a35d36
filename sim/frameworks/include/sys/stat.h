// The C library's file status under a Mac's name for the time of the last change, and the flags of files, which a Mac
// keeps beside the mode.
#pragma once

#include <stdint.h>

#include_next <sys/stat.h>

#define st_mtimespec st_mtim

// What protects an item from changes and removal: the owner's flags, and the system's, which take root.
#define UF_IMMUTABLE 0x00000002
#define UF_APPEND 0x00000004
#define SF_IMMUTABLE 0x00020000
#define SF_APPEND 0x00040000

// Knows these four flags only. The file system must have immutable and append-only files, and takes them only from
// root of the machine itself, also the owner's: EPERM elsewhere.
extern "C" int fchflags(int descriptor, uint32_t flags);
