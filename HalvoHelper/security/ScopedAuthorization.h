// Owns one Authorization Services reference, which is not a CoreFoundation object and has its own way to be freed.
#pragma once

#include <Security/Security.h>

#include <memory>
#include <type_traits>

namespace halvo {

// Frees with empty flags: the rights behind the reference stay with whoever obtained them.
struct AuthorizationFreer {
  void operator()(AuthorizationRef reference) const {
    static_cast<void>(AuthorizationFree(reference, kAuthorizationFlagDefaults));
  }
};

using ScopedAuthorization = std::unique_ptr<std::remove_pointer_t<AuthorizationRef>, AuthorizationFreer>;

}  // namespace halvo
