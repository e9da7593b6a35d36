// Decides whether an authorization holds a right, and lets the user grant it where that is allowed.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <string>

#include "sim/frameworks/security/TokenStore.h"

namespace halvo::sim {

struct EvaluationRules {
  bool mayInteract = false;
  bool mayExtend = false;
};

// Answers an Authorization Services status. A prompt is written to "authorization-prompts" in the state folder, and
// "authorization-answer" says what becomes of it: "allow" (an administrator gives the password), "allow NAME" (that
// account does), "cancel", or anything else for a wrong password. A password that counts is added to `token` as a
// credential; the caller stores it.
OSStatus evaluateRight(const std::string& name, const EvaluationRules& rules, Token& token);

}  // namespace halvo::sim
