// Makes text from elsewhere safe to show on a terminal.
#pragma once

#include <string>
#include <string_view>

namespace halvo {

// Each byte of a control character becomes "\" and three octal digits: a manifest's version or a line of a log must
// neither move the cursor nor begin a new line. Everything else stays, byte for byte.
[[nodiscard]] std::string visibleText(std::string_view text);

}  // namespace halvo
