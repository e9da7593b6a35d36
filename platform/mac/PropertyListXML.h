// A look at the XML form of a property list before the platform's reader gets it.
#pragma once

#include <string>
#include <string_view>

namespace halvo {

// The characters of a list in UTF-8: one that begins with the byte order mark of UTF-16 is converted, any other comes
// back as it is.
[[nodiscard]] std::string utf8OfPropertyList(std::string_view list);

// Whether the list is XML that the platform's reader takes and a strict one does not. The reader stops at the end of
// the first element, whatever stands behind it, makes a NUL of &#0;, and goes through a document type with declarations
// of its own by rules that nobody wrote down. Lists in other forms are left to it.
[[nodiscard]] bool isLaxPropertyListXML(std::string_view utf8);

}  // namespace halvo
