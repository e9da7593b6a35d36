// What a simulated Mac leaves in its state files for whoever watches from outside.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sim/launchd/JobState.h"

namespace halvo::sim {

// One run of a stand-in system tool.
struct ToolCall {
  std::string time;
  std::string tool;  // absolute path
  std::vector<std::string> arguments;
  int status = 0;
  bool operator==(const ToolCall&) const = default;
};

// The calls in the text of calls.jsonl. A last line that is still being written is left out; a line that is none is a
// std::runtime_error, since a test must not overlook it.
std::vector<ToolCall> parseToolCalls(std::string_view text);

std::vector<std::string> splitLines(std::string_view text);

}  // namespace halvo::sim
