// Decides whether a process that connected may talk to the helper at all.
#pragma once

#include <mach/message.h>

namespace halvo {

class ClientValidator {
 public:
  ClientValidator() = default;
  ClientValidator(const ClientValidator&) = delete;
  ClientValidator& operator=(const ClientValidator&) = delete;
  virtual ~ClientValidator() = default;

  // Judges the process that the kernel's audit token stands for, now. False also when nothing can be found out.
  // Blocks for milliseconds; any thread.
  virtual bool isAuthorized(const audit_token_t& auditToken) const = 0;
};

}  // namespace halvo
