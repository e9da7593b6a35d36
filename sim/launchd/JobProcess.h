// Starts the process of a job as launchd does: with nothing but what the job is meant to have.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <variant>
#include <vector>

namespace halvo::sim {

struct JobProcessOrder {
  std::string label;
  std::filesystem::path program;
  std::vector<std::string> arguments;
  std::vector<int> listening;               // sockets to pass on, from descriptor 3
  std::vector<std::string> listeningNames;  // their services
  uid_t user = 0;
  std::filesystem::path output;  // file that standard output and error are appended to
};

// An errno value.
struct StartFailure {
  int error = 0;
};

// The new process leads a process group of its own, sits in / with umask 022, has default signal dispositions, an empty
// signal mask and a minimal environment with LISTEN_FDS and LISTEN_PID, and dies with the caller. Answers when the
// program has taken over. Only for a program with one thread.
std::variant<pid_t, StartFailure> startJobProcess(const JobProcessOrder& order);

}  // namespace halvo::sim
