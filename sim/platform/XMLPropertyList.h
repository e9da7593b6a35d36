// Property lists in their XML form.
#pragma once

#include <optional>
#include <string_view>

#include "platform/PropertyList.h"

namespace halvo::sim {

// The entries of the dictionary in `xml`, as the port promises them.
std::optional<PropertyList> readXMLPropertyList(std::string_view xml);

}  // namespace halvo::sim
