#include "tests/Scenario.h"

#include <regex>

namespace halvo::sim {
namespace {

// Each line with the first match of `prefix` cut off.
std::vector<std::string> withoutPrefix(std::vector<std::string> lines, const std::regex& prefix) {
  for (std::string& line : lines) {
    line = std::regex_replace(line, prefix, "", std::regex_constants::format_first_only);
  }
  return lines;
}

}  // namespace

std::string Scenario::reply(const std::vector<std::string>& arguments) {
  const std::string out = machine.app(arguments).out;
  return out.substr(0, out.find('\n'));
}

std::vector<std::string> Scenario::helperLog() {
  std::vector<std::string> lines;
  for (std::string& line : mac().systemLog()) {
    if (line.find(" halvo-helper[") != std::string::npos) lines.push_back(std::move(line));
  }
  return withoutPrefix(std::move(lines), std::regex(R"(^.*? halvo-helper\[\d+\]: )"));
}

std::vector<std::string> Scenario::messagesIn(const std::string& logPath) {
  return withoutPrefix(splitLines(mac().readFile(logPath)), std::regex(R"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d \+0000: )"));
}

std::vector<std::string> Scenario::toolRuns() {
  std::vector<std::string> runs;
  for (const ToolCall& call : mac().calls()) {
    std::string line = call.tool;
    for (const std::string& argument : call.arguments) line += " " + argument;
    runs.push_back(line + " -> " + std::to_string(call.status));
  }
  return runs;
}

std::string waitingScript(SimulatedMac& mac) {
  constexpr const char* kPath = "/Users/user501/Downloads/waiting-postinstall";
  mac.writeFile(kPath, "#!/bin/sh\nwhile [ ! -e /private/var/tmp/go ]; do sleep 0.02; done\n", 0755);
  return mac.path(kPath).string();
}

void letItGo(SimulatedMac& mac) { mac.writeFile("/private/var/tmp/go", ""); }

}  // namespace halvo::sim
