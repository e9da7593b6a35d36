#include "sim/frameworks/security/RightStore.h"

#include <Security/Authorization.h>
#include <unistd.h>

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

}  // namespace

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

OSStatus removeRight(std::string_view name) {
  if (!readRight(name) || isReserved(name) || ::geteuid() != 0) return errAuthorizationDenied;
  std::error_code error;
  return std::filesystem::remove(fileOf(name), error) ? errAuthorizationSuccess : errAuthorizationInternal;
}

RightDefinition definitionDeciding(std::string_view name) {
  const auto stored = readRight(name);
  return stored ? rightDefinitionFrom(*stored) : defaultRightDefinition();
}

}  // namespace halvo::sim
