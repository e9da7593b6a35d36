// What has to be fulfilled for a right, as the database keeps it.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace halvo::sim {

struct RightDefinition {
  std::string ruleClass = "user";
  std::string group;
  std::string rule;  // another right that decides, for the class "rule"
  bool authenticateUser = true;
  bool allowRoot = false;
  bool sessionOwner = false;
  bool shared = false;
  std::int64_t timeout = INT32_MAX;  // seconds for which a credential counts
};

// Rebuilds a stored definition as the database gives it back. Keys it does not know are dropped; a value of another
// type than its key's counts as absent, so a number is no boolean; keys that the class always has get their defaults.
nlohmann::json rebuiltDefinition(const nlohmann::json& stored);

RightDefinition rightDefinitionFrom(const nlohmann::json& stored);

// What decides about a right that the database does not hold.
RightDefinition defaultRightDefinition();

}  // namespace halvo::sim
