// Work that leaves nothing behind, however it ends.
#pragma once

#include <functional>

namespace halvo::sim {

// Runs `work` in a child process, with a temporary directory (TMPDIR) of its own, and answers the exit status that it
// returns. When the work is over, or a SIGINT, SIGTERM or SIGHUP comes that was not ignored before, every process that
// it has left is ended and the directory is removed; what a signal has ended ends this process by the same signal. To
// be called first of all, while this process has one thread and no children.
int supervised(const std::function<int()>& work);

}  // namespace halvo::sim
