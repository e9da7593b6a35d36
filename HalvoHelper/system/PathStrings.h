// Path texts, cut and joined by the platform's rules. Pure text: no file is looked at, "." and ".." mean nothing here.
#pragma once

#include <string>
#include <string_view>

namespace halvo {

// The text after the last slash, trailing slashes ignored; "/" for a text of slashes only.
[[nodiscard]] std::string halvoLastPathComponent(std::string_view path);

// The path without its last component and the slashes before it; "/" when only the root is left of an absolute path,
// empty when nothing is left.
[[nodiscard]] std::string halvoDeletingLastPathComponent(std::string_view path);

// `path`, one slash, `component`; runs of slashes anywhere become one and trailing ones go.
[[nodiscard]] std::string halvoAppendingPathComponent(std::string_view path, std::string_view component);

}  // namespace halvo
