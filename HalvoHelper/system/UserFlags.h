// The flags with which an item's owner protects it from changes and removal, "Locked" in the Finder.
#pragma once

#include <string>

namespace halvo {

// Each clears the user's immutable and append-only flags and answers whether it cleared any. An item that has one of
// the system's as well is left as it is: it stays protected anyway. The first takes the item itself, open.
[[nodiscard]] bool halvoClearUserFlags(int item);

// The other takes an entry of an open directory and follows no link. Files, directories and links only.
[[nodiscard]] bool halvoClearUserFlags(int directory, const std::string& name);

}  // namespace halvo
