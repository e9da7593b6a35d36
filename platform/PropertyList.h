// Reads a property list whose top level is a dictionary, through the platform's property-list reader.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <variant>

namespace halvo {

// A value of any other kind than text: nobody asks for those.
struct PropertyListOther {
  bool operator==(const PropertyListOther&) const = default;
};

using PropertyListValue = std::variant<PropertyListOther, std::string>;
using PropertyList = std::map<std::string, PropertyListValue, std::less<>>;

// The entries of the dictionary in `bytes` (XML or binary form); nothing when the bytes are no property list or its
// top level is something else. Safe with hostile input; never throws.
[[nodiscard]] std::optional<PropertyList> halvoReadPropertyList(std::span<const std::byte> bytes);

}  // namespace halvo
