// The texts inside <integer>, <real> and <date>: nobody asks for their values, but a list that holds a malformed one is
// no property list.
#pragma once

#include <string_view>

namespace halvo::sim {

// Decimal or, behind 0x, hexadecimal, with or without a sign, in 64 bits; the positive ones reach as far as unsigned.
[[nodiscard]] bool isPropertyListInteger(std::string_view text);

// Also infinity and nan, in any case of letters.
[[nodiscard]] bool isPropertyListReal(std::string_view text);

// 2026-11-21T04:00:00Z.
[[nodiscard]] bool isPropertyListDate(std::string_view text);

}  // namespace halvo::sim
