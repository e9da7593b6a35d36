#include "HalvoHelper/security/RealAdminAuthorizer.h"

#include <Security/Security.h>

#include <cstring>
#include <utility>

#include "HalvoHelper/security/ScopedAuthorization.h"

namespace halvo {

RealAdminAuthorizer::RealAdminAuthorizer(std::string right) : right_(std::move(right)) {}

bool RealAdminAuthorizer::isAuthorized(std::span<const std::byte> externalForm) const {
  AuthorizationExternalForm form{};
  if (externalForm.size() != sizeof form.bytes) return false;
  std::memcpy(form.bytes, externalForm.data(), sizeof form.bytes);

  AuthorizationRef created = nullptr;
  const OSStatus creation = AuthorizationCreateFromExternalForm(&form, &created);
  const ScopedAuthorization reference(created);
  if (creation != errAuthorizationSuccess || !reference) return false;

  AuthorizationItem item = {right_.c_str(), 0, nullptr, 0};
  const AuthorizationRights rights = {1, &item};
  // Extending looks at what the client has already obtained. Interaction is not allowed: a daemon that prompted would
  // let any client put the system's password dialog in front of the user.
  const OSStatus status = AuthorizationCopyRights(reference.get(), &rights, kAuthorizationEmptyEnvironment,
                                                  kAuthorizationFlagExtendRights, nullptr);
  return status == errAuthorizationSuccess;
}

}  // namespace halvo
