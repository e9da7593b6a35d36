// The exit statuses of halvo-app, as its manual page lists them.
#pragma once

namespace halvo {

enum class ExitStatus {
  success = 0,
  refused = 1,
  unauthorized = 2,
  unreachable = 3,
  interrupted = 4,
  helperTooOld = 5,
  usage = 64,
  unusableInput = 66,
  unwritableOutput = 74,
  noReplyInTime = 75,
  interruptedByUser = 130,
};

// Of doctor, where the helper does not answer. It makes no request that changes the machine, of which the number tells
// otherwise.
inline constexpr ExitStatus kNoHelper = ExitStatus::interrupted;

}  // namespace halvo
