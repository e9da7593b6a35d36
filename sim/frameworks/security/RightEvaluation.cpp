#include "sim/frameworks/security/RightEvaluation.h"

#include <Security/Authorization.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>

#include "sim/frameworks/security/RightStore.h"
#include "sim/frameworks/security/StateFiles.h"
#include "sim/support/SimClock.h"
#include "sim/support/StateRoot.h"

namespace halvo::sim {
namespace {

// Rules that refer to each other in a circle decide nothing.
constexpr int kMostDelegations = 8;

bool isAtConsole(uid_t user) {
  std::ifstream sessions(stateRoot() / "gui-sessions");
  uid_t uid = 0;
  while (sessions >> uid) {
    if (uid == user) return true;
  }
  return false;
}

bool counts(const Credential& credential, const RightDefinition& definition) {
  if (credential.shared && !definition.shared) return false;
  const double age = uptimeSeconds() - credential.obtained;
  return age >= 0 && age <= static_cast<double>(definition.timeout);
}

// The one user of the machine is an administrator, and so is root; everybody who asks without a password is judged by
// who created the authorization.
bool isGrantedWithoutPassword(const RightDefinition& definition, const Token& token) {
  const bool isRoot = token.creatorUser == 0;
  if (definition.allowRoot && isRoot) return true;
  if (definition.sessionOwner && isAtConsole(token.creatorUser)) return true;
  return !definition.authenticateUser && (isRoot || isAtConsole(token.creatorUser));
}

std::string promptText(const std::string& name) {
  using Pointer = nlohmann::json::json_pointer;
  const auto stored = readRight(name);
  return stored ? stored->value(Pointer("/default-prompt/"), std::string()) : std::string();
}

OSStatus askUser(const std::string& name, const RightDefinition& definition, Token& token) {
  const nlohmann::json prompt = {
      {"right", name}, {"pid", ::getpid()}, {"uid", ::geteuid()}, {"text", promptText(name)}};
  appendLine(stateRoot() / "authorization-prompts",
             prompt.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
  const std::string answer = firstWord(stateRoot() / "authorization-answer");
  if (answer == "cancel") return errAuthorizationCanceled;
  if (answer != "allow") return errAuthorizationDenied;
  token.credentials.push_back({definition.shared, uptimeSeconds()});
  return errAuthorizationSuccess;
}

OSStatus evaluateUserClass(const std::string& name, const RightDefinition& definition, const EvaluationRules& rules,
                           Token& token) {
  if (isGrantedWithoutPassword(definition, token)) return errAuthorizationSuccess;
  if (!definition.authenticateUser) return errAuthorizationDenied;
  const bool granted = std::ranges::any_of(
      token.credentials, [&](const Credential& credential) { return counts(credential, definition); });
  if (granted) return errAuthorizationSuccess;
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
  const OSStatus status = evaluate(name, definitionDeciding(name), rules, token, 0);
  if (status == errAuthorizationSuccess && std::ranges::find(token.rights, name) == token.rights.end()) {
    token.rights.push_back(name);
  }
  return status;
}

}  // namespace halvo::sim
