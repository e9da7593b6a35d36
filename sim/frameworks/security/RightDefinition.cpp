#include "sim/frameworks/security/RightDefinition.h"

#include <array>
#include <nlohmann/json.hpp>
#include <string_view>

namespace halvo::sim {
namespace {

using nlohmann::json;

// A key that every right may have, or every right of the class "user" has. A null default means that it is left out
// when absent; otherwise the default also says which type is accepted.
struct Key {
  const char* name;
  json::value_t type;
  json defaultValue;
};

bool hasType(const json& value, json::value_t type) {
  if (type == json::value_t::number_integer) return value.is_number_integer();
  if (type == json::value_t::number_float) return value.is_number();
  return value.type() == type;
}

void carryOver(const json& stored, json& rebuilt, const Key& key) {
  const auto found = stored.find(key.name);
  if (found != stored.end() && hasType(*found, key.type)) {
    rebuilt[key.name] = *found;
  } else if (!key.defaultValue.is_null()) {
    rebuilt[key.name] = key.defaultValue;
  }
}

const auto& generalKeys() {
  using enum json::value_t;
  static const auto& keys = *new std::array<Key, 9>{{{"class", string, "user"},
                                                     {"version", number_integer, 0},
                                                     {"created", number_float, nullptr},
                                                     {"modified", number_float, nullptr},
                                                     {"comment", string, nullptr},
                                                     {"rule", string, nullptr},
                                                     {"identifier", string, nullptr},
                                                     {"requirement", string, nullptr},
                                                     {"default-prompt", object, nullptr}}};
  return keys;
}

const auto& userKeys() {
  using enum json::value_t;
  static const auto& keys = *new std::array<Key, 7>{{{"timeout", number_integer, INT32_MAX},
                                                     {"tries", number_integer, 10000},
                                                     {"shared", boolean, false},
                                                     {"allow-root", boolean, false},
                                                     {"session-owner", boolean, false},
                                                     {"authenticate-user", boolean, true},
                                                     {"group", string, nullptr}}};
  return keys;
}

}  // namespace

json rebuiltDefinition(const json& stored) {
  json rebuilt = json::object();
  for (const Key& key : generalKeys()) carryOver(stored, rebuilt, key);
  if (rebuilt["class"] != "user") return rebuilt;
  for (const Key& key : userKeys()) carryOver(stored, rebuilt, key);
  return rebuilt;
}

RightDefinition rightDefinitionFrom(const json& stored) {
  const json rebuilt = rebuiltDefinition(stored);
  RightDefinition definition;
  definition.ruleClass = rebuilt["class"];
  definition.group = rebuilt.value("group", "");
  definition.rule = rebuilt.value("rule", "");
  definition.authenticateUser = rebuilt.value("authenticate-user", definition.authenticateUser);
  definition.allowRoot = rebuilt.value("allow-root", definition.allowRoot);
  definition.sessionOwner = rebuilt.value("session-owner", definition.sessionOwner);
  definition.shared = rebuilt.value("shared", definition.shared);
  definition.timeout = rebuilt.value("timeout", definition.timeout);
  return definition;
}

RightDefinition defaultRightDefinition() {
  RightDefinition definition;
  definition.group = "admin";
  definition.shared = true;
  definition.timeout = 300;
  return definition;
}

}  // namespace halvo::sim
