// A look at a property list before the library gets it.
#pragma once

#include <string_view>

namespace halvo::sim {

// Whether arrays and dictionaries could nest deeper than the call stack bears: the library recurses once for each
// level. Counts all of them, nested or not; no property list of an honest bundle has that many.
[[nodiscard]] bool holdsTooManyContainers(std::string_view propertyList);

}  // namespace halvo::sim
