// Reads a JSON object out of a text, through the platform's JSON reader.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace halvo {

// A member value that nobody asks for: null, an array, an object, or a number that is not a whole one in 64 bits.
struct JSONOther {
  bool operator==(const JSONOther&) const = default;
};

// A number counts as an integer when the value that its text denotes is exactly whole and fits: 6, 6.0 and 6e0 alike;
// no double stands between. A boolean never counts as a number.
using JSONValue = std::variant<JSONOther, bool, std::int64_t, std::string>;
using JSONObject = std::map<std::string, JSONValue, std::less<>>;

// The members of the object that `text` holds; nothing when the text is not one JSON object: ill-formed UTF-8, any
// other top-level value, text after it, nesting deeper than 512. Of a repeated key the last value counts; a leading
// byte order mark is skipped. Safe with hostile input of any size; never throws. Needs no thread of its own.
[[nodiscard]] std::optional<JSONObject> halvoReadJSONObject(std::string_view text);

}  // namespace halvo
