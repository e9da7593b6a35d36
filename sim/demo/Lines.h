// Lines that are no longer than the terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace halvo::sim {

// No line is too long.
inline constexpr std::size_t kNoWidth = 0;

// What COLUMNS says, else what the terminal at the descriptor does. Without both there is nothing that would cut or
// fold a line: kNoWidth.
std::size_t widthOf(int descriptor, const char* columns);

// The text in lines of at most `width` code points: `first` before the first line, `rest` before the others. Broken at
// blanks, and inside a word where it alone is too long. A terminal narrower than a label and a few letters is taken for
// one that has room for them.
std::vector<std::string> folded(std::string_view first, std::string_view rest, std::string_view text,
                                std::size_t width);

}  // namespace halvo::sim
