// Removes a tree that somebody else may be changing at the same time.
#pragma once

#include <string>

namespace halvo {

// Removes the item at `path` and everything below it, however deep. The walk goes down by name from open directories
// and never follows a link, so one that is swapped in while it runs is removed itself and leads nowhere; it does not
// enter another file system. What cannot be removed stays and the rest still goes, except that the walk ends where a
// deep directory is moved away while it is in there. Locks that an owner may set (the user's immutable and append-only
// flags) do not hold it, those of the system do. True when nothing stayed. Trailing slashes are ignored. Takes few
// descriptors, a fixed stack, and memory by the depth and the entries of the directories on the way down. Blocks.
[[nodiscard]] bool halvoRemoveTree(const std::string& path);

}  // namespace halvo
