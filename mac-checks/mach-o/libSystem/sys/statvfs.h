// How much room a file system has. Blocks are counted in 32 bits.
#pragma once

#include <sys/types.h>

struct statvfs {
  unsigned long f_bsize;
  unsigned long f_frsize;
  uint32_t f_blocks;
  uint32_t f_bfree;
  uint32_t f_bavail;
  uint32_t f_files;
  uint32_t f_ffree;
  uint32_t f_favail;
  unsigned long f_fsid;
  unsigned long f_flag;
  unsigned long f_namemax;
};

extern "C" {

int statvfs(const char* __restrict path, struct statvfs* __restrict room);

}  // extern "C"
