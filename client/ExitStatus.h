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

}  // namespace halvo
