// Decides whether an authorization holds a right, and lets the user grant it where that is allowed.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <string>

#include "sim/frameworks/security/TokenStore.h"

namespace halvo::sim {

struct EvaluationRules {
  bool mayInteract = false;
  bool mayExtend = false;
};

// Answers an Authorization Services status. A prompt is written to "authorization-prompts" in the state folder, and
// "authorization-answer" says what the user does with it: allow, cancel, or anything else for a wrong password. What
// the user grants is added to `token`; the caller stores it.
OSStatus evaluateRight(const std::string& name, const EvaluationRules& rules, Token& token);

}  // namespace halvo::sim
