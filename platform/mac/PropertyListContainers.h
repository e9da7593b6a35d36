// A look at a property list before the platform's reader gets it.
#pragma once

#include <string_view>

namespace halvo {

// Whether the list holds more than 512 arrays and dictionaries, or hides how many it holds (XML with NULs in it, which
// is UTF-16). Readers recurse once for each level and run on threads with small stacks; the property list of an honest
// bundle has a few dozen containers in all.
[[nodiscard]] bool holdsTooManyContainers(std::string_view propertyList);

}  // namespace halvo
