// Opening files. The values of the flags are those of this system alone.
#pragma once

#include <sys/types.h>

#define O_RDONLY 0x0000
#define O_WRONLY 0x0001
#define O_RDWR 0x0002
#define O_NONBLOCK 0x00000004
#define O_APPEND 0x00000008
#define O_NOFOLLOW 0x00000100
#define O_CREAT 0x00000200
#define O_TRUNC 0x00000400
#define O_EXCL 0x00000800
#define O_DIRECTORY 0x00100000
#define O_SYMLINK 0x00200000
#define O_CLOEXEC 0x01000000

#define AT_FDCWD (-2)
#define AT_SYMLINK_NOFOLLOW 0x0020
#define AT_REMOVEDIR 0x0080

#define F_GETFD 1
#define F_SETFD 2
#define F_DUPFD_CLOEXEC 67
#define FD_CLOEXEC 1

extern "C" {

int open(const char* path, int flags, ...);
int openat(int folder, const char* path, int flags, ...);
int fcntl(int descriptor, int command, ...);

}  // extern "C"
