#include "client/doctor/ToolsCollector.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace halvo {
namespace {

constexpr std::array<std::string_view, 5> kTools = {"installer", "pkgutil", "launchctl", "dscl", "killall"};
constexpr std::array<std::string_view, 2> kParents = {"halvo-helper", "launchd"};

bool isRootsTool(const ProcessEntry& entry) {
  return entry.user == 0 && std::ranges::find(kTools, entry.name) != kTools.end();
}

// An administrator's own "sudo installer" has another parent.
bool isTheHelpers(const ProcessEntry& tool, const std::vector<ProcessEntry>& processes) {
  return std::ranges::any_of(processes, [&](const ProcessEntry& entry) {
    return entry.process == tool.parent && entry.user == 0 && std::ranges::find(kParents, entry.name) != kParents.end();
  });
}

}  // namespace

std::vector<Tool> toolsOfTheHelper(const std::vector<ProcessEntry>& processes) {
  std::vector<Tool> tools;
  for (const ProcessEntry& entry : processes) {
    if (!isRootsTool(entry) || !isTheHelpers(entry, processes)) continue;
    tools.push_back({.process = entry.process, .name = entry.name, .age = entry.age});
  }
  return tools;
}

}  // namespace halvo
