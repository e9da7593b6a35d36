// Copies files and trees with their metadata.
#pragma once

#include <stdint.h>

struct _copyfile_state;
typedef struct _copyfile_state* copyfile_state_t;
typedef uint32_t copyfile_flags_t;

#define COPYFILE_ALL 0xF  // access lists, status, extended attributes and content

#define COPYFILE_RECURSIVE (1 << 15)
#define COPYFILE_EXCL (1 << 17)
#define COPYFILE_NOFOLLOW_SRC (1 << 18)
#define COPYFILE_NOFOLLOW_DST (1 << 19)
#define COPYFILE_NOFOLLOW (COPYFILE_NOFOLLOW_SRC | COPYFILE_NOFOLLOW_DST)
#define COPYFILE_CLONE (1 << 24)

extern "C" {

// Negative with errno set on failure, and what was copied until then stays. Here trees are cloned and nothing else: any
// flag that is not above is EINVAL, and so is leaving out COPYFILE_RECURSIVE or COPYFILE_CLONE, which implies a full
// and exclusive copy that does not follow its source. An existing directory at `to` means "copy into it".
int copyfile(const char* from, const char* to, copyfile_state_t state, copyfile_flags_t flags);

}  // extern "C"
