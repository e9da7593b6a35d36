// Carries over what a file has besides its content.
#pragma once

#include <copyfile.h>
#include <sys/stat.h>

namespace halvo::sim {

// Copies what `flags` ask for onto an open file or directory: owner and extended attributes as far as the system
// permits, the mode, and last the times. Set-id bits of files do not survive a clone-style copy, those of directories
// do. False with errno set when the mode or the times cannot be set.
bool copyMetadata(int from, int to, const struct stat& info, copyfile_flags_t flags);

// The same for a symbolic link, which has neither a mode nor attributes of its own.
bool copyLinkMetadata(const char* link, const struct stat& info, copyfile_flags_t flags);

}  // namespace halvo::sim
