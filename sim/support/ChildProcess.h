// Running a program and seeing what it prints. Every child gets PATH, perhaps TERM, and nothing else of this process's
// environment, and no descriptor but its standard streams.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "HalvoHelper/system/UniqueDescriptor.h"

namespace halvo::sim {

// The status when there is no such program.
inline constexpr int kProgramMissing = 127;

struct ChildStreams {
  int in = 0;
  int out = 1;
  int err = 2;
};

// Starts argv[0], found in the usual folders unless it is a path, in `folder` or where this process is. Nothing when
// there is no such program.
std::optional<pid_t> startChild(std::vector<std::string> argv, const ChildStreams& streams,
                                const std::filesystem::path& folder = {});

// Blocks until the child has ended: its exit status, or 128 + the number of the signal that ended it.
int collectChild(pid_t child);

// As waitpid(2) has it; the same numbers.
int exitStatusOf(int waitStatus);

// The words as exec(3) takes them; good while the words stay where they are.
std::vector<char*> argumentPointers(std::vector<std::string>& words);

struct CommandResult {
  int status = 0;
  std::string out;
  std::string err;
  bool operator==(const CommandResult&) const = default;
};

// Runs a program whose input is empty, and collects what it prints.
CommandResult runChild(const std::vector<std::string>& argv);

// What is written to `in` is read from `out`. Closed on exec, so that no other child holds an end. A std::system_error
// when none can be had.
struct Pipe {
  UniqueDescriptor out;
  UniqueDescriptor in;
};
Pipe makePipe();

// A file without a name, as a standard stream: neither side ever waits for the other, and what a program leaves running
// in the background delays nobody. Positioned at its start; closed on exec. Not valid when none can be had.
UniqueDescriptor namelessFile(std::string_view content = {});

// All that is in the file, wherever it is positioned.
std::string contentOf(const UniqueDescriptor& file);

}  // namespace halvo::sim
