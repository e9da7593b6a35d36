// A look at a JSON text before the platform's reader gets it.
#pragma once

#include <string_view>

namespace halvo {

// Whether arrays and objects nest deeper than 512. Readers recurse, and a text of a few kilobytes could otherwise
// exhaust the stack of a root process.
[[nodiscard]] bool jsonNestsTooDeep(std::string_view json);

}  // namespace halvo
