// The command that a session of the machine is for.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace halvo::sim {

// Starts it as `user` in that user's name (HOME, USER, PATH and little else), in /, with the caller's standard streams,
// default signal dispositions and an empty signal mask. Says on standard error why nothing could be started. Only for a
// program with one thread.
std::optional<pid_t> startSessionCommand(const std::vector<std::string>& command, uid_t user);

// The environment of a program that `user` runs.
std::vector<std::string> userEnvironment(uid_t user);

}  // namespace halvo::sim
