// A file's status. The time of the last change is st_mtimespec here and the flags (immutable and the like) come with
// it. The kinds and bits of a mode are octal, and telling a kind is a macro.
#pragma once

#include <sys/types.h>

struct stat {
  dev_t st_dev;
  mode_t st_mode;
  nlink_t st_nlink;
  ino_t st_ino;
  uid_t st_uid;
  gid_t st_gid;
  dev_t st_rdev;
  struct timespec st_atimespec;
  struct timespec st_mtimespec;
  struct timespec st_ctimespec;
  struct timespec st_birthtimespec;
  off_t st_size;
  blkcnt_t st_blocks;
  blksize_t st_blksize;
  uint32_t st_flags;
  uint32_t st_gen;
  int32_t st_lspare;
  int64_t st_qspare[2];
};

#define st_mtime st_mtimespec.tv_sec

#define S_IFMT 0170000
#define S_IFIFO 0010000
#define S_IFDIR 0040000
#define S_IFREG 0100000
#define S_IFLNK 0120000

#define S_ISDIR(mode) (((mode)&S_IFMT) == S_IFDIR)
#define S_ISREG(mode) (((mode)&S_IFMT) == S_IFREG)
#define S_ISFIFO(mode) (((mode)&S_IFMT) == S_IFIFO)
#define S_ISLNK(mode) (((mode)&S_IFMT) == S_IFLNK)

// Flags of a file: those of its owner, then those of the system.
#define UF_IMMUTABLE 0x00000002
#define UF_APPEND 0x00000004
#define SF_IMMUTABLE 0x00020000
#define SF_APPEND 0x00040000

extern "C" {

int stat(const char* path, struct stat* status) DARWIN_INODE64(stat);
int lstat(const char* path, struct stat* status) DARWIN_INODE64(lstat);
int fstat(int descriptor, struct stat* status) DARWIN_INODE64(fstat);
int fstatat(int folder, const char* path, struct stat* status, int flags) DARWIN_INODE64(fstatat);

int chmod(const char* path, mode_t mode);
int chflags(const char* path, uint32_t flags);
int fchflags(int descriptor, uint32_t flags);
int mkdir(const char* path, mode_t mode);
int mkdirat(int folder, const char* path, mode_t mode);
int mkfifo(const char* path, mode_t mode);
mode_t umask(mode_t mask);
int utimensat(int folder, const char* path, const struct timespec times[2], int flags) DARWIN_INTRODUCED(10.13);

}  // extern "C"
