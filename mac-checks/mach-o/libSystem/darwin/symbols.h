// Functions whose symbol differs from their name. On x86_64 the plain names still belong to the calls with 32-bit file
// numbers; realpath has a second form that takes no buffer, which is the one that C++ gets.
#pragma once

#if defined(__x86_64__)
#define DARWIN_INODE64(name) __asm__("_" #name "$INODE64")
#else
#define DARWIN_INODE64(name)
#endif
#define DARWIN_EXTENSION(name) __asm__("_" #name "$DARWIN_EXTSN")
#define DARWIN_INTRODUCED(version) __attribute__((availability(macos, introduced = version)))
