// Runs system tools. Nothing else in the helper starts a process.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace halvo {

struct ProcessResult {
  // The exit status; the bare signal number if a signal ended the tool; -1 if it could not be started.
  std::int32_t code = 0;
  // Standard output and standard error together, UTF-8; empty if the tool wrote anything else. A tool that could not
  // be started leaves "spawn failed: " and the system's reason here.
  std::string output;

  bool operator==(const ProcessResult&) const = default;
};

class ProcessRunner {
 public:
  ProcessRunner() = default;
  ProcessRunner(const ProcessRunner&) = delete;
  ProcessRunner& operator=(const ProcessRunner&) = delete;
  virtual ~ProcessRunner() = default;

  // Runs the executable at the absolute path `tool` with `arguments`, which no shell ever sees, and waits for it to
  // exit. No time-out. Any thread; calls do not disturb each other.
  virtual ProcessResult run(const std::string& tool, const std::vector<std::string>& arguments) const = 0;
};

}  // namespace halvo
