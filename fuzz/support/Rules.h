// The rules of text that several formats share, stated a second time and by other means than the product uses: targets
// compare the two.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace halvo::fuzz {

// How many bytes the white space character takes that stands in front of `text`; 0 when none does. By Unicode's
// property White_Space.
[[nodiscard]] std::size_t whiteSpaceAt(std::string_view text);

// The same for what ends a line.
[[nodiscard]] std::size_t lineEndAt(std::string_view text);

[[nodiscard]] std::size_t dotAt(std::string_view text);
[[nodiscard]] std::size_t lineFeedAt(std::string_view text);
[[nodiscard]] std::size_t slashAt(std::string_view text);

// What stands between separators, empty pieces included: one more than there are separators.
[[nodiscard]] std::vector<std::string> allPieces(std::string_view text, std::size_t (*separatorAt)(std::string_view));

// The same without the empty ones.
[[nodiscard]] std::vector<std::string> pieces(std::string_view text, std::size_t (*separatorAt)(std::string_view));

// The value of an optional sign and decimal digits; nothing for any other text and beyond 64 bits.
[[nodiscard]] std::optional<std::int64_t> decimal(const std::string& text);

// Without blanks and tabs at both ends.
[[nodiscard]] std::string trimmed(const std::string& text);

[[nodiscard]] bool contains(std::string_view text, std::string_view part);

}  // namespace halvo::fuzz
