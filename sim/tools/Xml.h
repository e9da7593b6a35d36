// The little XML that packages and property lists need.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace halvo::sim {

// `text` as it stands in an element or an attribute.
std::string xmlEscaped(std::string_view text);

// The value of an attribute in the first start tag named `element`; nothing when there is no such tag or attribute.
std::optional<std::string> xmlAttribute(std::string_view document, std::string_view element,
                                        std::string_view attribute);

// A whole property list around the keys and values of its dictionary.
std::string propertyList(std::string_view dictionary);

// A key with a string, as a line of such a dictionary.
std::string plistString(std::string_view key, std::string_view value);

}  // namespace halvo::sim
