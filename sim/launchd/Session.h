// One life of the simulated machine, from switching on until the command that it was switched on for has ended.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace halvo::sim {

struct SessionOrder {
  std::filesystem::path root = "/";
  uid_t user = 0;
  std::vector<std::string> command;  // runs as `user`, with the caller's standard streams
};

// Boots, runs the command, ends every job and every process that the machine has left, and answers the command's exit
// status (128 + signal when one ended it, or ended the machine). Says on standard error what makes it impossible, and
// answers 71 (the machine cannot start), 75 (it is running already) or 127 (no such command). A SIGINT is the
// command's, which is in the same process group; when it has ended, what is being served for somebody is finished
// first, unless another one comes. Once per process: it takes over the signals and the children of this process, which
// has one thread.
int runSession(const SessionOrder& order);

}  // namespace halvo::sim
