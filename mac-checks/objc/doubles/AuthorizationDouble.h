// What tests do to the double of Authorization Services, which a client asks for an administrator's approval.
#pragma once

#include <Security/Security.h>

#include <string>
#include <vector>

namespace halvo::sim {

// How every prompt is answered from now on; errAuthorizationSuccess approves.
void answerPromptsWith(OSStatus answer);

// The rights that somebody was asked for since the last reset, each once per prompt.
std::vector<std::string> promptedRights();

// The authorizations that were made and not freed.
int livingAuthorizations();

void resetAuthorizations();

}  // namespace halvo::sim
