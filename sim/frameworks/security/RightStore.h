// The authorization database on disk: a JSON file for each right. Replies are Authorization Services statuses.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string_view>

#include "sim/frameworks/security/RightDefinition.h"

namespace halvo::sim {

// What is stored for the right; nothing when the database does not hold it.
std::optional<nlohmann::json> readRight(std::string_view name);

// Writes the right as the calling process. Only root changes a right that exists; a new one needs a signed program or
// root. Names that end in "." or begin with "config." are refused, and so is the hundred and first new right of one
// signing identifier.
OSStatus writeRight(std::string_view name, nlohmann::json definition);

OSStatus removeRight(std::string_view name);

// The definition that decides about `name`: its own, or the one for rights that nobody defined.
RightDefinition definitionDeciding(std::string_view name);

}  // namespace halvo::sim
