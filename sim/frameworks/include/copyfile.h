// Copies files and trees with their metadata.
#pragma once

#include <stdint.h>

struct _copyfile_state;
typedef struct _copyfile_state* copyfile_state_t;
typedef uint32_t copyfile_flags_t;

#define COPYFILE_ACL (1 << 0)
#define COPYFILE_STAT (1 << 1)
#define COPYFILE_XATTR (1 << 2)
#define COPYFILE_DATA (1 << 3)
#define COPYFILE_SECURITY (COPYFILE_STAT | COPYFILE_ACL)
#define COPYFILE_METADATA (COPYFILE_SECURITY | COPYFILE_XATTR)
#define COPYFILE_ALL (COPYFILE_METADATA | COPYFILE_DATA)

#define COPYFILE_RECURSIVE (1 << 15)
#define COPYFILE_CHECK (1 << 16)
#define COPYFILE_EXCL (1 << 17)
#define COPYFILE_NOFOLLOW_SRC (1 << 18)
#define COPYFILE_NOFOLLOW_DST (1 << 19)
#define COPYFILE_NOFOLLOW (COPYFILE_NOFOLLOW_SRC | COPYFILE_NOFOLLOW_DST)
#define COPYFILE_MOVE (1 << 20)
#define COPYFILE_UNLINK (1 << 21)
#define COPYFILE_PACK (1 << 22)
#define COPYFILE_UNPACK (1 << 23)
#define COPYFILE_CLONE (1 << 24)
#define COPYFILE_CLONE_FORCE (1 << 25)
#define COPYFILE_RUN_IN_PLACE (1 << 26)
#define COPYFILE_DATA_SPARSE (1 << 27)
#define COPYFILE_PRESERVE_DST_TRACKED (1 << 28)

extern "C" {

// Negative with errno set on failure, and what was copied until then stays. With COPYFILE_RECURSIVE an existing
// directory at `to` means "copy into it".
int copyfile(const char* from, const char* to, copyfile_state_t state, copyfile_flags_t flags);

}  // extern "C"
