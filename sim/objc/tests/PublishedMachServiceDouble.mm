#include "platform/contract/PublishedMachService.h"

#include <unistd.h>

#include "sim/objc/doubles/XPCDouble.h"
#include "sim/objc/tests/TokenValues.h"

namespace halvo {

// The doubles let every listener publish every name; what is missing is who connects, which is this process.
PublishedMachService::PublishedMachService() : name_("com.halvo.contract") {
  const audit_token_t self = {
      {::geteuid(), ::geteuid(), ::getegid(), ::getuid(), ::getgid(), static_cast<unsigned>(::getpid()), 0, 1}};
  sim::setDoubleClientIdentity(sim::boxed(self), ::getpid());
}

PublishedMachService::~PublishedMachService() { sim::setDoubleClientIdentity(nil, 0); }

}  // namespace halvo
