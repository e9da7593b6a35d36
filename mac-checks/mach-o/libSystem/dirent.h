// Reading a folder. An entry says how long its name is and what kind of file it names.
#pragma once

#include "darwin/symbols.h"
#include "darwin/types.h"

struct dirent {
  ino_t d_ino;
  uint64_t d_seekoff;
  uint16_t d_reclen;
  uint16_t d_namlen;
  uint8_t d_type;
  char d_name[1024];
};

#define DT_UNKNOWN 0
#define DT_DIR 4
#define DT_REG 8
#define DT_LNK 10

struct DarwinOpenFolder;
typedef struct DarwinOpenFolder DIR;

extern "C" {

DIR* fdopendir(int descriptor) DARWIN_INODE64(fdopendir);
struct dirent* readdir(DIR* folder) DARWIN_INODE64(readdir);
void rewinddir(DIR* folder) DARWIN_INODE64(rewinddir);
int closedir(DIR* folder);
int dirfd(DIR* folder);

}  // extern "C"
