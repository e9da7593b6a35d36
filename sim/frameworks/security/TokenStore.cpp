#include "sim/frameworks/security/TokenStore.h"

#include <sys/random.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <system_error>

#include "sim/frameworks/security/StateFiles.h"
#include "sim/frameworks/testing/Instrumentation.h"
#include "sim/support/ProcessIdentity.h"
#include "sim/support/StateRoot.h"

namespace halvo::sim {
namespace {

using nlohmann::json;

// Programs of every user keep theirs here, and nobody removes another's.
constexpr mode_t kFolderMode = 01777;

std::filesystem::path fileOf(const TokenName& name) {
  return stateRoot() / "authorization-tokens" / (hexText(name.data(), name.size()) + ".json");
}

json jsonFrom(const Token& token) {
  json credentials = json::array();
  for (const Credential& credential : token.credentials) {
    credentials.push_back({{"shared", credential.shared}, {"obtained", credential.obtained}});
  }
  return {{"pid", token.creator},
          {"version", token.creatorVersion},
          {"uid", token.creatorUser},
          {"credentials", credentials},
          {"rights", token.rights}};
}

// Throws when a member is missing or of another type.
Token tokenFrom(const json& stored) {
  Token token{stored.at("pid"), stored.at("version"), stored.at("uid"), {}, stored.at("rights")};
  for (const json& credential : stored.at("credentials")) {
    token.credentials.push_back({credential.at("shared"), credential.at("obtained")});
  }
  return token;
}

}  // namespace

std::optional<TokenName> createToken() {
  TokenName name{};
  if (::getrandom(name.data(), name.size(), 0) != static_cast<ssize_t>(name.size())) return std::nullopt;
  const auto version = processVersion(::getpid());
  if (!version) return std::nullopt;
  const Token token{::getpid(), *version, ::geteuid(), {}, {}};
  return writeToken(name, token) ? std::optional(name) : std::nullopt;
}

std::optional<Token> readToken(const TokenName& name) {
  const auto stored = readJSONObject(fileOf(name));
  if (!stored) return std::nullopt;
  try {
    Token token = tokenFrom(*stored);
    if (processVersion(token.creator) == token.creatorVersion) return token;
  } catch (const json::exception&) {
    return std::nullopt;
  }
  // Its creator has gone, and with it the authorization.
  destroyToken(name);
  return std::nullopt;
}

bool writeToken(const TokenName& name, const Token& token) {
  return replaceJSON(fileOf(name), jsonFrom(token), kFolderMode);
}

void destroyToken(const TokenName& name) {
  std::error_code ignored;
  std::filesystem::remove(fileOf(name), ignored);
}

}  // namespace halvo::sim
