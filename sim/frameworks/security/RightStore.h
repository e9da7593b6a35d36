// The authorization database on disk: a JSON file for each right. Replies are Authorization Services statuses.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace halvo::sim {

// What has to be fulfilled for a right.
struct RightDefinition {
  std::string ruleClass = "user";
  std::string group{};
  std::string rule{};  // another right that decides, for the class "rule"
  bool authenticateUser = true;
  bool allowRoot = false;
  bool sessionOwner = false;
  bool shared = false;
  std::int64_t timeout = INT32_MAX;  // seconds for which a credential counts
};

// What is stored for the right; nothing when the database does not hold it.
std::optional<nlohmann::json> readRight(std::string_view name);

// Writes the right as the calling process. Only root changes a right that exists; a new one needs a signed program or
// root. Names that end in "." or begin with "config." are refused, and so is the hundred and first new right of one
// signing identifier.
OSStatus writeRight(std::string_view name, nlohmann::json definition);

// Rebuilds a stored definition as the database gives it back. Keys it does not know are dropped; a value of another
// type than its key's counts as absent, so a number is no boolean; keys that the class always has get their defaults.
nlohmann::json rebuiltDefinition(const nlohmann::json& stored);

// The definition that decides about `name`: its own, or the one for rights that nobody defined.
RightDefinition definitionDeciding(std::string_view name);

}  // namespace halvo::sim
