// The value of a JSON number by its own text: a double would round it.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace halvo {

// Whether `text` is one number in JSON's grammar: no plus sign, no leading zero, no bare point.
[[nodiscard]] bool isJSONNumber(std::string_view text);

// The integer that equals `number`, a text in that grammar; nothing when it has a fraction or does not fit: 6.0 and
// 60e-1 give 6, 6.5 and 1e-400 give nothing.
[[nodiscard]] std::optional<std::int64_t> wholeJSONNumber(std::string_view number);

}  // namespace halvo
