#include "sim/frameworks/security/RightStore.h"

#include <Security/Authorization.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <system_error>
#include <utility>

#include "sim/frameworks/security/Guest.h"
#include "sim/frameworks/security/StateFiles.h"
#include "sim/support/MachinePaths.h"

namespace halvo::sim {
namespace {

using nlohmann::json;

constexpr mode_t kFolderMode = 01777;
constexpr int kMostRightsOfOneProgram = 100;

std::filesystem::path folder() { return stateRoot() / "authorization-db"; }

bool isUsableName(std::string_view name) {
  return !name.empty() && name.find('/') == std::string_view::npos && name.size() < 200;
}

std::filesystem::path fileOf(std::string_view name) { return folder() / (std::string(name) + ".json"); }

// A name that ends in a dot would decide about every right that begins with it.
bool isReserved(std::string_view name) { return name.ends_with('.') || name.starts_with("config."); }

// Seconds since 2001, which is how the database counts.
double now() {
  constexpr double kFrom1970To2001 = 978307200;
  const std::chrono::duration<double> since1970 = std::chrono::system_clock::now().time_since_epoch();
  return since1970.count() - kFrom1970To2001;
}

int countRightsOf(const std::string& identifier) {
  int count = 0;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder(), error), end; !error && entry != end;
       entry.increment(error)) {
    const auto right = readJSONObject(entry->path());
    if (right && right->value("identifier", nlohmann::json()) == identifier) ++count;
  }
  return count;
}

bool mayAdd(const std::optional<CodeSignature>& signature) {
  if (::geteuid() == 0 && !signature) return true;
  return signature && countRightsOf(signature->identifier) < kMostRightsOfOneProgram;
}

void noteCreator(nlohmann::json& definition, const std::optional<CodeSignature>& signature) {
  if (!signature) return;
  definition["identifier"] = signature->identifier;
  std::string requirement = "identifier \"" + signature->identifier + "\"";
  if (signature->anchor != "adhoc") requirement += " and anchor " + signature->anchor;
  if (!signature->teamIdentifier.empty()) {
    requirement += " and certificate leaf[subject.OU] = \"" + signature->teamIdentifier + "\"";
  }
  definition["requirement"] = requirement;
}

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

}  // namespace

json rebuiltDefinition(const json& stored) {
  json rebuilt = json::object();
  for (const Key& key : generalKeys()) carryOver(stored, rebuilt, key);
  if (rebuilt["class"] != "user") return rebuilt;
  for (const Key& key : userKeys()) carryOver(stored, rebuilt, key);
  return rebuilt;
}

std::optional<nlohmann::json> readRight(std::string_view name) {
  return isUsableName(name) ? readJSONObject(fileOf(name)) : std::nullopt;
}

OSStatus writeRight(std::string_view name, nlohmann::json definition) {
  if (!isUsableName(name) || isReserved(name)) return errAuthorizationDenied;
  const auto previous = readRight(name);
  const auto signature = findGuest(::getpid(), std::nullopt).guest.signature;
  if (previous && ::geteuid() != 0) return errAuthorizationDenied;
  if (!previous && !mayAdd(signature)) return errAuthorizationDenied;

  // Who created a right and when is the database's to say, whatever the definition claims.
  for (const char* key : {"identifier", "requirement", "created", "modified"}) definition.erase(key);
  noteCreator(definition, signature);
  const double time = now();
  definition["created"] = previous ? previous->value("created", time) : time;
  definition["modified"] = time;
  return replaceJSON(fileOf(name), rebuiltDefinition(definition), kFolderMode) ? errAuthorizationSuccess
                                                                               : errAuthorizationInternal;
}

RightDefinition definitionDeciding(std::string_view name) {
  const auto stored = readRight(name);
  return stored ? rightDefinitionFrom(*stored) : RightDefinition{.group = "admin", .shared = true, .timeout = 300};
}

}  // namespace halvo::sim
