// Text in a page.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace halvo::sim {

// The text as a page may hold it, between tags and in quoted attributes: nothing in it is markup. What is no UTF-8, and
// control characters, which no page may hold, become U+FFFD.
std::string escaped(std::string_view text);

// "<name attributes>content</name>"; the content is markup, the attributes are as they stand in the tag.
std::string element(std::string_view name, std::string_view attributes, std::string_view content);

// Microseconds in milliseconds, as "12.3".
std::string milliseconds(std::int64_t microseconds);

// How much of the whole, as "12.34%"; all of it when the whole is nothing.
std::string percentage(std::int64_t part, std::int64_t whole);

}  // namespace halvo::sim
