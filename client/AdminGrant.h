// An administrator's approval, as the application obtains it from Authorization Services.
#pragma once

#include <Security/Security.h>

#include <cstdint>
#include <memory>
#include <type_traits>
#include <variant>

#include "HalvoHelperXPC/HalvoHelperProtocol.h"

namespace halvo {

// Holds one authorization reference. The external form is good only while this object lives, so it must outlive the
// request that carries the form.
class AdminGrant {
 public:
  // The status of the call that failed.
  struct Refusal {
    std::int32_t status;
  };

  // Asks for the product's right, which shows the system's prompt and blocks until it is answered.
  static std::variant<AdminGrant, Refusal> obtain();

  // An authorization that holds no right.
  static std::variant<AdminGrant, Refusal> empty();

  // The 32 bytes that the helper checks.
  const AuthorizationBlob& externalForm() const { return externalForm_; }

 private:
  struct Freer {
    void operator()(AuthorizationRef reference) const {
      static_cast<void>(AuthorizationFree(reference, kAuthorizationFlagDefaults));
    }
  };
  using Reference = std::unique_ptr<std::remove_pointer_t<AuthorizationRef>, Freer>;

  AdminGrant(Reference reference, AuthorizationBlob externalForm);

  static std::variant<AdminGrant, Refusal> externalise(Reference reference);

  Reference reference_;
  AuthorizationBlob externalForm_;
};

}  // namespace halvo
