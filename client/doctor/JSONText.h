// Writes JSON. Each function answers the text of one value, from which the larger ones are put together.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace halvo {

// Takes any bytes: what is not well-formed UTF-8 becomes U+FFFD, byte for byte.
[[nodiscard]] std::string jsonString(std::string_view text);

[[nodiscard]] std::string jsonBoolean(bool value);
[[nodiscard]] std::string jsonNumber(std::int64_t value);
[[nodiscard]] std::string jsonArray(const std::vector<std::string>& values);

// Members in their order; the keys are the program's own, the values JSON texts.
[[nodiscard]] std::string jsonObject(std::initializer_list<std::pair<std::string_view, std::string>> members);

inline constexpr const char* kJSONNull = "null";

}  // namespace halvo
