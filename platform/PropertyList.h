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

// No honest bundle's list has a tenth of it; readers recurse once for each level and run on threads with small stacks.
inline constexpr std::size_t kMostPropertyListContainers = 512;

// A binary list stores a text once and may name it many times. Together the copies may take twice the bytes of the
// list, since UTF-16 grows in UTF-8, and this many more.
inline constexpr std::size_t kMostRepeatedPropertyListText = 1024UL * 1024;

// The entries of the dictionary in `bytes`, XML (UTF-8, or UTF-16 with its byte order mark) or binary; nothing when
// they hold no whole and sound property list, when its top level is something else or has a key that is no text, and
// when there are more containers (arrays and dictionaries) or repeated texts than that. XML is unsound when anything
// but comments stands behind its end, with a NUL, and with ill-formed UTF-8; in a binary text a NUL is kept, and an
// unpaired surrogate becomes U+FFFD. Of a repeated key in XML the last value counts. Safe with hostile input: time and
// memory grow with the number of bytes; never throws.
[[nodiscard]] std::optional<PropertyList> halvoReadPropertyList(std::span<const std::byte> bytes);

}  // namespace halvo
