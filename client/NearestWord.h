// Finds what somebody may have meant by a word that was mistyped.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace halvo {

// The known word that the fewest mistakes lead away from: a character too many, too few, wrong, or changed for its
// neighbour. Empty when none is near, which takes more than a mistake in every three characters; nothing is near to
// what is longer than 64 characters.
[[nodiscard]] std::string_view nearestWord(std::string_view typed, std::span<const std::string_view> known);

// " (did you mean 'WORD'?)", to be put behind a complaint; empty when no known word is near, and for a known
// word that stands where it must not.
[[nodiscard]] std::string suggestionFor(std::string_view typed, std::span<const std::string_view> known);

}  // namespace halvo
