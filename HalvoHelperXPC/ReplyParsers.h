// What the application reads out of the helper's replies. Pure functions; nothing here blocks, fails loudly or throws.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace halvo {

// Exact equality: neither side tolerates the other being newer.
[[nodiscard]] bool halvoHelperXPCVersionMatches(std::int64_t sent, std::int64_t helper);

// Whether a helper of that version answers the four methods that carry an authorization; an unknown version does not.
[[nodiscard]] bool halvoHelperSupportsAuthorization(std::optional<std::int64_t> helperVersion);

// Whether `reply` is a JSON object whose "code" is the text "unauthorized"; other members do not matter.
[[nodiscard]] bool halvoIsUnauthorizedReply(const std::optional<std::string>& reply);

// The whole number under "helper_version" of a ping reply; nothing when it cannot be had.
[[nodiscard]] std::optional<std::int64_t> halvoParseHelperVersion(const std::optional<std::string>& reply);

}  // namespace halvo
