// Reading a folder. An entry says how long its name is and what kind of file it names.
#pragma once

#include <sys/types.h>

struct dirent {
  ino_t d_ino;
  uint64_t d_seekoff;
  uint16_t d_reclen;
  uint16_t d_namlen;
  uint8_t d_type;
  char d_name[1024];
};

#define DT_DIR 4

struct DarwinOpenFolder;
typedef struct DarwinOpenFolder DIR;

extern "C" {

DIR* fdopendir(int descriptor) DARWIN_INODE64(fdopendir);
struct dirent* readdir(DIR* folder) DARWIN_INODE64(readdir);
int closedir(DIR* folder);

}  // extern "C"
