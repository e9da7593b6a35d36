#include "sim/frameworks/security/RightEvaluation.h"

#include <Security/Authorization.h>
#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <mutex>
#include <nlohmann/json.hpp>

#include "sim/frameworks/security/RightStore.h"
#include "sim/frameworks/security/StateFiles.h"
#include "sim/support/Files.h"
#include "sim/support/MachinePaths.h"
#include "sim/support/SimClock.h"

namespace halvo::sim {
namespace {

// Rules that refer to each other in a circle decide nothing.
constexpr int kMostDelegations = 8;

// An administrator whose name is not told; no account has it.
constexpr const char* kSomeAdministrator = "";

// Judged by the accounts of the machine, whose primary group counts like the others.
bool isMember(const passwd& account, const std::string& groupName) {
  std::array<gid_t, 64> groups{};
  int count = groups.size();
  const group* wanted = ::getgrnam(groupName.c_str());
  if (wanted == nullptr || ::getgrouplist(account.pw_name, account.pw_gid, groups.data(), &count) < 0) return false;
  return std::ranges::find(groups.begin(), groups.begin() + count, wanted->gr_gid) != groups.begin() + count;
}

bool isAcceptable(const std::string& user, const RightDefinition& definition, uid_t sessionOwner) {
  if (user == kSomeAdministrator) return definition.group == "admin";
  const passwd* account = ::getpwnam(user.c_str());
  if (account == nullptr) return false;
  return account->pw_uid == 0 || (definition.sessionOwner && account->pw_uid == sessionOwner) ||
         isMember(*account, definition.group);
}

// A Mac takes the age by the wall clock; nobody sets the clock of this one, and it never sleeps.
bool counts(const Credential& credential, const RightDefinition& definition, uid_t sessionOwner) {
  return uptimeSeconds() - credential.obtained <= static_cast<double>(definition.timeout) &&
         isAcceptable(credential.user, definition, sessionOwner);
}

bool isSatisfied(const RightDefinition& definition, const Token& token) {
  const auto satisfies = [&](const Credential& credential) {
    return counts(credential, definition, token.creatorUser);
  };
  if (std::ranges::any_of(token.credentials, satisfies)) return true;
  const auto shared = definition.shared ? sharedCredential(token.creatorUser) : std::nullopt;
  return shared && satisfies(*shared);
}

bool isSessionOwnerAcceptable(const RightDefinition& definition, uid_t sessionOwner) {
  const passwd* account = ::getpwuid(sessionOwner);
  return account != nullptr && isAcceptable(account->pw_name, definition, sessionOwner);
}

// A right's own mechanisms take the place of the password dialogue and its text.
void writePrompt(const std::string& name) {
  using Pointer = nlohmann::json::json_pointer;
  const nlohmann::json stored = readRight(name).value_or(nlohmann::json::object());
  nlohmann::json prompt = {{"right", name}, {"pid", ::getpid()}, {"uid", ::geteuid()}};
  if (const auto mechanisms = stored.find("mechanisms"); mechanisms != stored.end() && !mechanisms->empty()) {
    prompt["mechanisms"] = *mechanisms;
  } else {
    prompt["text"] = stored.value(Pointer("/default-prompt/"), std::string());
  }
  appendLine(stateRoot() / "authorization-prompts",
             prompt.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

OSStatus askUser(const std::string& name, const RightDefinition& definition, Token& token) {
  writePrompt(name);
  std::ifstream file(stateRoot() / "authorization-answer");
  std::string answer;
  std::string user(kSomeAdministrator);
  file >> answer >> user;
  if (answer == "cancel") return errAuthorizationCanceled;
  const Credential credential{user, uptimeSeconds()};
  if (answer != "allow" || !counts(credential, definition, token.creatorUser)) return errAuthorizationDenied;
  token.credentials.push_back(credential);
  if (definition.shared) shareCredential(token.creatorUser, credential);
  return errAuthorizationSuccess;
}

OSStatus evaluateUserClass(const std::string& name, const RightDefinition& definition, const EvaluationRules& rules,
                           Token& token) {
  if (definition.allowRoot && token.creatorUser == 0) return errAuthorizationSuccess;
  if (!definition.authenticateUser) {
    return isSessionOwnerAcceptable(definition, token.creatorUser) ? errAuthorizationSuccess : errAuthorizationDenied;
  }
  if (isSatisfied(definition, token)) return errAuthorizationSuccess;
  if (!rules.mayExtend) return errAuthorizationDenied;
  if (!rules.mayInteract) return errAuthorizationInteractionNotAllowed;
  return askUser(name, definition, token);
}

OSStatus evaluate(const std::string& name, const RightDefinition& definition, const EvaluationRules& rules,
                  Token& token, int delegations) {
  if (definition.ruleClass == "allow") return errAuthorizationSuccess;
  if (definition.ruleClass == "user") return evaluateUserClass(name, definition, rules, token);
  if (definition.ruleClass != "rule" || delegations >= kMostDelegations) return errAuthorizationDenied;
  return evaluate(name, definitionDeciding(definition.rule), rules, token, delegations + 1);
}

}  // namespace

OSStatus evaluateRight(const std::string& name, const EvaluationRules& rules, Token& token) {
  // The look-ups of accounts answer with memory that all threads share.
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  return evaluate(name, definitionDeciding(name), rules, token, 0);
}

}  // namespace halvo::sim
