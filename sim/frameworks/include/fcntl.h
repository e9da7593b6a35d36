// The C library's opening of files with a Mac's way of opening a link itself.
#pragma once

#include_next <fcntl.h>

// Nothing can be read or written through such a descriptor here: it is for looking at the item and at its flags.
#define O_SYMLINK (O_PATH | O_NOFOLLOW)
