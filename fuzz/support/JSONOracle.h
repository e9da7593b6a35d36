// What a JSON text says, read into a whole tree: the port on the simulated Mac follows the text member by member, with
// the same library.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace halvo::fuzz {

// The value under `key` of the object in `text`; nothing when the text is not one object, nests deeper than 512, holds
// a NUL, or has no such key.
[[nodiscard]] std::optional<nlohmann::json> memberOfObject(std::string_view text, const std::string& key);

// The value's text, when it is one.
[[nodiscard]] std::optional<std::string> asText(const std::optional<nlohmann::json>& value);

// Whether `read` is right for the value under a key: a whole number in 64 bits, or nothing for anything else. A number
// with a point or an exponent is only judged as well as a double can tell.
[[nodiscard]] bool isWholeNumberOf(const std::optional<nlohmann::json>& value, std::optional<std::int64_t> read);

// The text as a JSON string.
[[nodiscard]] std::string asJSON(const std::string& text);

}  // namespace halvo::fuzz
