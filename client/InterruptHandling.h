// What happens when a person types Control-C.
#pragma once

namespace halvo {

// From now on SIGINT ends the process with status 130, after a sentence on standard error: the helper does not notice
// and goes on with what it was asked for.
void endWithStatusOnInterrupt();

}  // namespace halvo
