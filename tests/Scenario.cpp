#include "tests/Scenario.h"

#include <algorithm>
#include <cctype>

namespace halvo::sim {
namespace {

// Whether `text` looks like `pattern`, in which 0 stands for any digit.
bool looksLike(std::string_view text, std::string_view pattern) {
  return std::ranges::equal(text, pattern, [](char c, char expected) {
    return expected == '0' ? std::isdigit(static_cast<unsigned char>(c)) != 0 : c == expected;
  });
}

}  // namespace

std::string Scenario::reply(const std::vector<std::string>& arguments) {
  const std::string out = machine.app(arguments).out;
  return out.substr(0, out.find('\n'));
}

std::vector<std::string> Scenario::helperLog() {
  constexpr std::string_view kEndOfPrefix = "]: ";
  std::vector<std::string> lines;
  for (const std::string& line : mac().systemLog()) {
    const std::size_t end = line.find(kEndOfPrefix);
    if (line.find(" halvo-helper[") > end || end == std::string::npos) continue;
    lines.push_back(line.substr(end + kEndOfPrefix.size()));
  }
  return lines;
}

std::vector<std::string> Scenario::messagesIn(const std::string& logPath) {
  constexpr std::string_view kDate = "0000-00-00 00:00:00 +0000: ";
  std::vector<std::string> lines = splitLines(mac().readFile(logPath));
  for (std::string& line : lines) {
    if (looksLike(line.substr(0, kDate.size()), kDate)) line.erase(0, kDate.size());
  }
  return lines;
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

std::string waitingScript(Machine& mac) {
  constexpr const char* kPath = "/Users/user501/Downloads/waiting-postinstall";
  mac.writeFile(kPath, "#!/bin/sh\nwhile [ ! -e /private/var/tmp/go ]; do sleep 0.02; done\n", 0755);
  return mac.path(kPath).string();
}

void letItGo(Machine& mac) { mac.writeFile("/private/var/tmp/go", ""); }

}  // namespace halvo::sim
