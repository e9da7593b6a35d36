// The commands that run in the machine besides launchd's jobs: the one that a session is for, and those that are asked
// for over the control socket.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace halvo::sim {

struct CommandStreams {
  int in = 0;
  int out = 1;
  int err = 2;
};

// Starts it as `user` in that user's name (HOME, USER, PATH and little else), in /, with these standard streams,
// default signal dispositions and an empty signal mask. With streams other than this process's own it leads a process
// group. Says on its standard error why nothing could be started, or ends with 127. Only for a program with one thread.
std::optional<pid_t> startSessionCommand(const std::vector<std::string>& command, uid_t user,
                                         const CommandStreams& streams = {});

}  // namespace halvo::sim
