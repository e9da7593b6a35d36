// UTF-8, which the program works with, and UTF-16, which Foundation works with. Neither direction ever fails: what is
// ill-formed becomes U+FFFD, so that a hostile text is a text like any other and never a missing one.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace halvo {

// False for overlong forms, surrogates, code points above U+10FFFF and sequences cut short.
[[nodiscard]] bool isWellFormedUTF8(std::string_view text);

// Every ill-formed byte becomes one U+FFFD. U+0000 and a byte order mark are kept.
[[nodiscard]] std::vector<std::uint16_t> utf16FromUTF8(std::string_view text);

// Every unpaired surrogate becomes one U+FFFD.
[[nodiscard]] std::string utf8FromUTF16(std::span<const std::uint16_t> units);

}  // namespace halvo
