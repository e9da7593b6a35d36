// Removes a tree that somebody else may be changing at the same time.
#pragma once

#include <string>

namespace halvo {

// Removes the item at `path` and everything below it. The walk holds each directory open and goes down by name from
// there without following links, so a link swapped in while it runs is removed itself and never leads elsewhere; it
// does not enter another file system. What cannot be removed stays and the rest still goes. True when nothing stayed.
// Trailing slashes are ignored. Trees of more than 200 levels are refused below that. Blocks.
[[nodiscard]] bool halvoRemoveTree(const std::string& path);

}  // namespace halvo
