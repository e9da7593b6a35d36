#include "sim/harness/MachineState.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

namespace halvo::sim {
namespace {

ToolCall parseCall(const std::string& line) try {
  const nlohmann::json call = nlohmann::json::parse(line);
  return {.time = call.at("time").get<std::string>(),
          .tool = call.at("tool").get<std::string>(),
          .arguments = call.at("arguments").get<std::vector<std::string>>(),
          .status = call.at("status").get<int>()};
} catch (const nlohmann::json::exception&) {
  throw std::runtime_error("calls.jsonl has a line that is no call: " + line);
}

}  // namespace

std::vector<ToolCall> parseToolCalls(std::string_view text) {
  std::vector<ToolCall> calls;
  for (const std::string& line : splitLines(text.substr(0, text.rfind('\n') + 1))) calls.push_back(parseCall(line));
  return calls;
}

std::vector<std::string> splitLines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

}  // namespace halvo::sim
