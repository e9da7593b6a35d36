// The object behind an AuthorizationRef: this process's handle on a live authorization.
#pragma once

#include <Security/Authorization.h>

#include <memory>
#include <optional>
#include <string_view>

#include "sim/frameworks/security/TokenStore.h"

struct AuthorizationOpaqueRef {
  AuthorizationOpaqueRef(const halvo::sim::TokenName& tokenName, bool isOwner);
  AuthorizationOpaqueRef(const AuthorizationOpaqueRef&) = delete;
  AuthorizationOpaqueRef& operator=(const AuthorizationOpaqueRef&) = delete;
  // The authorization itself ends with the last handle of the process that created it; other processes drop only
  // their own handle.
  ~AuthorizationOpaqueRef();

  const halvo::sim::TokenName name;

 private:
  const bool isOwner_;
};

namespace halvo::sim {

// The status that a test wrote for `call` into "faults/authorization" of the state folder, a line each such as
// "create -60008". The calls are create, create-from-external-form, make-external-form, copy-rights, right-get,
// right-set and right-remove.
std::optional<OSStatus> scriptedFault(std::string_view call);

}  // namespace halvo::sim
