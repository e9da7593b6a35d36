// Live authorizations on disk, a JSON file each, so that a program in another process can check what a user granted.
#pragma once

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace halvo::sim {

// The external form of an authorization: 32 random bytes that nobody can guess.
using TokenName = std::array<char, 32>;

// The proof that a user gave a password, or a touch.
struct Credential {
  std::string user;
  double obtained = 0;  // simulated uptime
};

struct Token {
  pid_t creator = 0;
  std::uint32_t creatorVersion = 0;
  uid_t creatorUser = 0;
  std::vector<Credential> credentials;
};

// Makes an authorization of the calling process; nothing when the state folder cannot be written.
std::optional<TokenName> createToken();

// Nothing when the name is unknown, or when the process that created the authorization has gone.
std::optional<Token> readToken(const TokenName& name);

bool writeToken(const TokenName& name, const Token& token);
void destroyToken(const TokenName& name);

// What the authorizations of one login share: the latest password that was given for a shared right.
std::optional<Credential> sharedCredential(uid_t login);
void shareCredential(uid_t login, const Credential& credential);

}  // namespace halvo::sim
