#include "sim/frameworks/security/TokenStore.h"

#include <sys/random.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <system_error>

#include "sim/frameworks/security/StateFiles.h"
#include "sim/frameworks/testing/Instrumentation.h"
#include "sim/support/MachinePaths.h"
#include "sim/support/Processes.h"

namespace halvo::sim {

// Reading throws when a member is missing or of another type.
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Credential, user, obtained)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Token, creator, creatorVersion, creatorUser, credentials)

namespace {

using nlohmann::json;

// Programs of every user keep theirs here, and nobody removes another's.
constexpr mode_t kFolderMode = 01777;

std::filesystem::path folder() { return stateRoot() / "authorization-tokens"; }

std::filesystem::path fileOf(const TokenName& name) { return folder() / (hexText(name.data(), name.size()) + ".json"); }

std::filesystem::path fileOf(uid_t login) { return folder() / ("login-" + std::to_string(login) + ".json"); }

}  // namespace

std::optional<TokenName> createToken() {
  TokenName name{};
  if (::getrandom(name.data(), name.size(), 0) != static_cast<ssize_t>(name.size())) return std::nullopt;
  const auto version = processVersion(::getpid());
  if (!version) return std::nullopt;
  const Token token{::getpid(), *version, ::geteuid(), {}};
  return writeToken(name, token) ? std::optional(name) : std::nullopt;
}

std::optional<Token> readToken(const TokenName& name) {
  const auto stored = readJSONObject(fileOf(name));
  if (!stored) return std::nullopt;
  try {
    Token token = stored->get<Token>();
    if (processVersion(token.creator) == token.creatorVersion) return token;
  } catch (const json::exception&) {
    return std::nullopt;
  }
  // Its creator has gone, and with it the authorization.
  destroyToken(name);
  return std::nullopt;
}

bool writeToken(const TokenName& name, const Token& token) { return replaceJSON(fileOf(name), token, kFolderMode); }

void destroyToken(const TokenName& name) {
  std::error_code ignored;
  std::filesystem::remove(fileOf(name), ignored);
}

std::optional<Credential> sharedCredential(uid_t login) try {
  const auto stored = readJSONObject(fileOf(login));
  return stored ? std::optional(stored->get<Credential>()) : std::nullopt;
} catch (const json::exception&) {
  return std::nullopt;
}

void shareCredential(uid_t login, const Credential& credential) {
  // A password that cannot be shared is asked for again.
  static_cast<void>(replaceJSON(fileOf(login), credential, kFolderMode));
}

}  // namespace halvo::sim
