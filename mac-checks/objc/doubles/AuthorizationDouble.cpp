#include "mac-checks/objc/doubles/AuthorizationDouble.h"

#include <algorithm>

struct AuthorizationOpaqueRef {
  bool approved = false;
};

namespace {

OSStatus gAnswer = errAuthorizationSuccess;
std::vector<std::string> gPrompted;
int gLiving = 0;

AuthorizationOpaqueRef* writable(AuthorizationRef authorization) {
  return const_cast<AuthorizationOpaqueRef*>(authorization);
}

}  // namespace

namespace halvo::sim {

void answerPromptsWith(OSStatus answer) { gAnswer = answer; }

std::vector<std::string> promptedRights() { return gPrompted; }

int livingAuthorizations() { return gLiving; }

void resetAuthorizations() {
  gAnswer = errAuthorizationSuccess;
  gPrompted.clear();
}

}  // namespace halvo::sim

OSStatus AuthorizationCreate(const AuthorizationRights* /*rights*/, const AuthorizationEnvironment* /*environment*/,
                             AuthorizationFlags /*flags*/, AuthorizationRef* authorization) {
  *authorization = new AuthorizationOpaqueRef();
  ++gLiving;
  return errAuthorizationSuccess;
}

OSStatus AuthorizationFree(AuthorizationRef authorization, AuthorizationFlags /*flags*/) {
  delete writable(authorization);
  --gLiving;
  return errAuthorizationSuccess;
}

OSStatus AuthorizationCopyRights(AuthorizationRef authorization, const AuthorizationRights* rights,
                                 const AuthorizationEnvironment* /*environment*/, AuthorizationFlags flags,
                                 AuthorizationRights** /*authorizedRights*/) {
  if (authorization == nullptr) return errAuthorizationInvalidRef;
  if ((flags & kAuthorizationFlagExtendRights) == 0) return errAuthorizationDenied;
  if ((flags & kAuthorizationFlagInteractionAllowed) == 0) return errAuthorizationInteractionNotAllowed;
  for (UInt32 i = 0; i < rights->count; ++i) gPrompted.emplace_back(rights->items[i].name);
  writable(authorization)->approved = gAnswer == errAuthorizationSuccess;
  return gAnswer;
}

// Tells by its text whether the right was obtained.
OSStatus AuthorizationMakeExternalForm(AuthorizationRef authorization, AuthorizationExternalForm* extForm) {
  if (authorization == nullptr) return errAuthorizationInvalidRef;
  std::ranges::fill(extForm->bytes, authorization->approved ? 'A' : '-');
  return errAuthorizationSuccess;
}
