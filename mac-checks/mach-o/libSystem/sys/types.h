// The integers that the kernel's interfaces are made of, points in time, and the opaque locale. Several integers are
// narrower than elsewhere: modes and link counts have 16 bits, devices 32; a file's number has 64 and is no long.
#pragma once

#include <stddef.h>
#include <stdint.h>

typedef uint32_t __uint32_t;  // as libc++ spells it
typedef unsigned short u_short;

typedef int32_t dev_t;
typedef uint64_t ino_t;
typedef uint16_t mode_t;
typedef uint16_t nlink_t;
typedef uint32_t uid_t;
typedef uint32_t gid_t;
typedef uint32_t id_t;
typedef int32_t pid_t;
typedef int64_t off_t;
typedef int64_t blkcnt_t;
typedef int32_t blksize_t;
typedef long ssize_t;
typedef long time_t;
typedef unsigned long clock_t;
typedef int32_t suseconds_t;
typedef uint32_t useconds_t;
typedef uint32_t sigset_t;

struct timespec {
  time_t tv_sec;
  long tv_nsec;
};

struct timeval {
  time_t tv_sec;
  suseconds_t tv_usec;
};

// What libc++ hands to every function whose name ends in _l.
struct _xlocale;
typedef struct _xlocale* locale_t;

// Functions whose symbol differs from their name. On x86_64 the plain names still belong to the calls with 32-bit file
// numbers; realpath has a second form that takes no buffer, which is the one that C++ gets.
#if defined(__x86_64__)
#define DARWIN_INODE64(name) __asm__("_" #name "$INODE64")
#else
#define DARWIN_INODE64(name)
#endif
#define DARWIN_EXTENSION(name) __asm__("_" #name "$DARWIN_EXTSN")
#define DARWIN_INTRODUCED(version) __attribute__((availability(macos, introduced = version)))
