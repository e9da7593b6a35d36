// What happens when a person types Control-C.
#pragma once

namespace halvo {

// From now on SIGINT ends the process with status 130, after a sentence on standard error: the helper does not notice
// and goes on with what it was asked for. SIGHUP and SIGTERM end it as they always do.
void endWithStatusOnInterrupt();

// What each of these signals removes first: a file, and the folder that it lies in. The texts must live until others
// take their place; null is nothing.
void removeOnInterrupt(const char* file, const char* folder);

}  // namespace halvo
