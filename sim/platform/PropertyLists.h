// Property lists in their two forms.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/PropertyList.h"

namespace halvo::sim {

// An element of an XML list with what it holds.
struct XMLPropertyListNode {
  enum class Kind { plist, dictionary, array, key, string, integer, real, yes, no, date, data };
  Kind kind = Kind::plist;
  std::string text;                           // of what is no container
  std::vector<XMLPropertyListNode> children;  // of a dictionary: keys and values by turns
};

// The outermost value of the list in `xml`; nothing when that is no sound list, as the port says what is one. A key may
// stand in a value's place, where it is a text, as it is on a Mac.
std::optional<XMLPropertyListNode> readXMLPropertyList(std::string_view xml);

// The entries of the dictionary in a binary list, as the port promises them.
std::optional<PropertyList> readBinaryPropertyList(std::string_view list);

// The texts inside <integer>, <real> and <date>: a list that holds a malformed one is no property list.
// An integer is decimal or, behind 0x, hexadecimal, with or without a sign, in 64 bits; the positive ones reach as far
// as unsigned. A real may also be infinity or nan, in any case of letters. A date looks like 2026-11-21T04:00:00Z.
[[nodiscard]] bool isPropertyListInteger(std::string_view text);
[[nodiscard]] bool isPropertyListReal(std::string_view text);
[[nodiscard]] bool isPropertyListDate(std::string_view text);

}  // namespace halvo::sim
