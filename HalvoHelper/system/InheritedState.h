// What this process takes over from whoever started it.
#pragma once

namespace halvo {

// Puts right what would make tools lose their exit status or our own files leak: SIGCHLD has its default action
// afterwards, and descriptors 0, 1 and 2 are open, on /dev/null where they were closed. The first call of a program,
// while it has one thread and has opened nothing.
void halvoPutInheritedStateInOrder();

}  // namespace halvo
