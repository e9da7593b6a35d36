#include "client/AdminGrant.h"

#include <cstring>
#include <string>
#include <utility>

#include "HalvoHelperXPC/Constants.h"

namespace halvo {
namespace {

OSStatus createReference(AuthorizationRef& created) {
  const OSStatus status =
      AuthorizationCreate(nullptr, kAuthorizationEmptyEnvironment, kAuthorizationFlagDefaults, &created);
  return status == errAuthorizationSuccess && created == nullptr ? errAuthorizationInternal : status;
}

OSStatus obtainRight(AuthorizationRef reference) {
  const std::string name(kHalvoAdminRight);
  AuthorizationItem item = {name.c_str(), 0, nullptr, 0};
  const AuthorizationRights rights = {1, &item};
  constexpr AuthorizationFlags kFlags =
      kAuthorizationFlagExtendRights | kAuthorizationFlagInteractionAllowed | kAuthorizationFlagPreAuthorize;
  return AuthorizationCopyRights(reference, &rights, kAuthorizationEmptyEnvironment, kFlags, nullptr);
}

}  // namespace

AdminGrant::AdminGrant(Reference reference, AuthorizationBlob externalForm)
    : reference_(std::move(reference)), externalForm_(std::move(externalForm)) {}

std::variant<AdminGrant, AdminGrant::Refusal> AdminGrant::obtain() {
  AuthorizationRef created = nullptr;
  const OSStatus creation = createReference(created);
  Reference reference(created);
  if (creation != errAuthorizationSuccess) return Refusal{creation};
  const OSStatus approval = obtainRight(reference.get());
  if (approval != errAuthorizationSuccess) return Refusal{approval};
  return externalise(std::move(reference));
}

std::variant<AdminGrant, AdminGrant::Refusal> AdminGrant::empty() {
  AuthorizationRef created = nullptr;
  const OSStatus creation = createReference(created);
  Reference reference(created);
  if (creation != errAuthorizationSuccess) return Refusal{creation};
  return externalise(std::move(reference));
}

std::variant<AdminGrant, AdminGrant::Refusal> AdminGrant::externalise(Reference reference) {
  AuthorizationExternalForm form{};
  const OSStatus status = AuthorizationMakeExternalForm(reference.get(), &form);
  if (status != errAuthorizationSuccess) return Refusal{status};
  AuthorizationBlob bytes(sizeof form.bytes);
  std::memcpy(bytes.data(), form.bytes, bytes.size());
  return AdminGrant(std::move(reference), std::move(bytes));
}

}  // namespace halvo
