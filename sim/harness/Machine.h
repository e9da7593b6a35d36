// A simulated Mac of its own for one test, or for the demonstration: a fresh machine in a temporary directory, removed
// at the end. What goes wrong with the machine itself is a std::runtime_error: a test cannot go on without it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <future>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/harness/TreeSnapshot.h"
#include "sim/launchd/JobState.h"
#include "sim/support/ChildProcess.h"
#include "sim/support/WaitUntil.h"

namespace halvo::sim {

// One run of a stand-in system tool.
struct ToolCall {
  std::string time;
  std::string tool;  // absolute path
  std::vector<std::string> arguments;
  int status = 0;
  std::int64_t began = 0;  // on the clock of uptimeMicroseconds()
  std::int64_t ended = 0;
  bool operator==(const ToolCall&) const = default;
};

// The calls in the text of calls.jsonl. A last line that is still being written is left out; a line that is none is a
// std::runtime_error, since a test must not overlook it.
std::vector<ToolCall> parseToolCalls(std::string_view text);

std::vector<std::string> splitLines(std::string_view text);

class MachineSession;

class Machine {
 public:
  // Builds the machine; it is not running yet, so its state can be prepared.
  Machine();
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;
  ~Machine();

  // Boots. Returns when launchd has loaded its jobs. The machine ends with this process.
  void start();
  // Shuts down and waits until nothing inside runs any more. start() boots the same machine again.
  void stop();

  // Whether other accounts than uid 0 exist in the running machine. Where the host allows only one uid, every job runs
  // as root and commands of any other user fail with status 126.
  [[nodiscard]] bool supportsSeveralUsers() const;

  // Runs a command (argv[0] is an absolute path inside) as user 0, 501 or 502 and waits, at most a minute.
  CommandResult run(unsigned user, const std::vector<std::string>& argv, const std::string& input = {});
  std::future<CommandResult> runAsync(unsigned user, const std::vector<std::string>& argv,
                                      const std::string& input = {});

  // A path inside the machine as a path of the host. Links on the way are resolved as inside (/var/log is below
  // private); a link at the very end is kept.
  [[nodiscard]] std::filesystem::path path(std::string_view inside) const;
  // The content of a file inside; empty when there is none.
  [[nodiscard]] std::string readFile(std::string_view inside) const;
  // Makes the folders above it; everything belongs to root.
  void writeFile(std::string_view inside, std::string_view content, unsigned mode = 0644);

  // The state files of the machine ("audio-devices", "faults/installer", ...); replaced in one step.
  void writeState(const std::string& name, std::string_view text);
  [[nodiscard]] std::string readState(const std::string& name) const;

  // The system tools that ran so far, the jobs that launchd knows, and the lines of the system log.
  [[nodiscard]] std::vector<ToolCall> calls() const;
  [[nodiscard]] std::vector<JobState> jobs() const;
  [[nodiscard]] std::vector<std::string> systemLog() const;

  // What lies at these paths inside the machine and below them.
  [[nodiscard]] TreeSnapshot snapshotTree(const std::vector<std::string>& paths) const;

 private:
  [[nodiscard]] MachineSession& session() const;

  TemporaryDirectory folder_;
  std::filesystem::path root_;
  std::unique_ptr<MachineSession> session_;
};

}  // namespace halvo::sim
