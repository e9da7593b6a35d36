// The words of one line that fields.py writes: texts in hexadecimal digits after "=", "-" for what is absent, decimal
// numbers, and words that stand for themselves.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace halvo {

using Words = std::vector<std::string>;

// Splits at single blanks. An empty line has one empty word.
[[nodiscard]] Words wordsOf(std::string_view line);
[[nodiscard]] std::string lineOf(const Words& words);

// All three throw std::invalid_argument at a word of another kind, so that no damaged question gets an answer.
[[nodiscard]] std::string textOf(std::string_view word);
[[nodiscard]] std::optional<std::string> optionalTextOf(std::string_view word);
[[nodiscard]] std::int64_t numberOf(std::string_view word);

[[nodiscard]] std::string wordOfText(std::string_view text);
[[nodiscard]] std::string wordOfTruth(bool truth);

}  // namespace halvo
