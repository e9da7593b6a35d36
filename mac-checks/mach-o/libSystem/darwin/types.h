// The integers that the kernel's interfaces are made of. Several are narrower than elsewhere: modes and link counts
// have 16 bits, devices 32; a file's number has 64 and is no long.
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
