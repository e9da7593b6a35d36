#include "HalvoHelper/system/RealIdleSleep.h"

#include <IOKit/pwr_mgt/IOPMLib.h>

#include <type_traits>
#include <utility>

namespace halvo {

static_assert(std::is_same_v<IdleSleep::Hold, IOPMAssertionID>);

RealIdleSleep::RealIdleSleep(std::function<void(const std::string&)> log) : log_(std::move(log)) {}

std::optional<IdleSleep::Hold> RealIdleSleep::prevent() const {
  IOPMAssertionID assertion = kIOPMNullAssertionID;
  const IOReturn status = IOPMAssertionCreateWithName(kIOPMAssertPreventUserIdleSystemSleep, kIOPMAssertionLevelOn,
                                                      CFSTR("changing the Halvo audio product"), &assertion);
  if (status == kIOReturnSuccess) return assertion;
  log_("halvo-helper: idle sleep not prevented status=" + std::to_string(status));
  return std::nullopt;
}

// A failure leaves nothing to do: the assertion ends with the process, which ends when it is idle.
void RealIdleSleep::allow(Hold hold) const { static_cast<void>(IOPMAssertionRelease(hold)); }

}  // namespace halvo
