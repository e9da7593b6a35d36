// Judges a client by the code signature of its running process, through the Security framework.
#pragma once

#include <Security/Security.h>

#include <functional>
#include <string>
#include <string_view>

#include "HalvoHelper/security/ClientValidator.h"
#include "HalvoHelper/security/ScopedCF.h"
#include "platform/SystemLog.h"

namespace halvo {

// The code requirement that every client must satisfy: that bundle identifier, a chain that ends in Apple's root, and
// a leaf certificate of that team. The values are inserted as they are, so they must be constants.
[[nodiscard]] std::string halvoClientCodeRequirement(std::string_view teamID, std::string_view appIdentifier);

// Immutable after construction: any thread, no lock. Every connection is judged afresh.
class SecCodeClientValidator final : public ClientValidator {
 public:
  using LogFunction = std::function<void(std::string_view)>;

  // A requirement that does not compile leaves a validator that refuses everybody. `log` is told the status of a
  // look-up or check that failed, so that a missing token and a wrong signature can be told apart afterwards.
  explicit SecCodeClientValidator(const std::string& requirement, LogFunction log = halvoSystemLog);

  bool isAuthorized(const audit_token_t& auditToken) const override;

 private:
  ScopedCF<SecRequirementRef> requirement_;
  LogFunction log_;
};

}  // namespace halvo
