// Starts processes as launchd does: with nothing but what they are meant to have. Only for a program with one thread.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "sim/support/ChildProcess.h"

namespace halvo::sim {

// The group of every ordinary account ("staff").
inline constexpr gid_t kStaffGroup = 20;

// Whether this process can become `user`. Inside a user namespace that maps one uid only, nobody but that uid exists.
[[nodiscard]] bool userExists(uid_t user);

struct JobProcessOrder {
  std::string label;
  std::filesystem::path program;
  std::vector<std::string> arguments;
  std::vector<int> listening;               // sockets to pass on, from descriptor 3
  std::vector<std::string> listeningNames;  // their services
  uid_t user = 0;
  std::filesystem::path output;                      // file that standard output and error are appended to
  std::vector<std::filesystem::path> closedFolders;  // in which it finds nothing that it may look at
};

// An errno value.
struct StartFailure {
  int error = 0;
};

// The new process leads a process group of its own, sits in / with umask 022, has default signal dispositions, an empty
// signal mask and a minimal environment with LISTEN_FDS and LISTEN_PID, and dies with the caller. Answers when the
// program has taken over.
std::variant<pid_t, StartFailure> startJobProcess(const JobProcessOrder& order);

// Starts a command that is no job: the one that a session is for, or one that is asked for over the control socket. It
// runs as `user` in that user's name (HOME, USER, PATH and little else), in /, with these standard streams, default
// signal dispositions and an empty signal mask. With streams other than this process's own it leads a process group.
// Says on its standard error why nothing could be started, or ends with 127.
std::optional<pid_t> startSessionCommand(const std::vector<std::string>& command, uid_t user,
                                         const ChildStreams& streams = {});

}  // namespace halvo::sim
