// A look at a property list before the platform's reader gets it.
#pragma once

#include <string_view>

namespace halvo {

// Whether the list, binary or XML in UTF-8, holds more arrays and dictionaries than a property list may, or hides how
// many it holds: XML with NULs in it.
[[nodiscard]] bool holdsTooManyContainers(std::string_view propertyList);

}  // namespace halvo
