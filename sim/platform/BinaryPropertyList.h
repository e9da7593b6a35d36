// Property lists in their binary form.
#pragma once

#include <optional>
#include <string_view>

#include "platform/PropertyList.h"

namespace halvo::sim {

// The entries of the dictionary in `list`, as the port promises them.
std::optional<PropertyList> readBinaryPropertyList(std::string_view list);

}  // namespace halvo::sim
