#include "tests/soaking/Leftovers.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace halvo::soak {
namespace {

constexpr std::array<std::string_view, 4> kComponents = {
    "/Library/Audio/Plug-Ins/HAL/Halvo.driver", "/Library/PrivilegedHelperTools/halvo-broker",
    "/Library/LaunchDaemons/com.halvo.broker.plist", "/Library/LaunchAgents/com.halvo.daemon.plist"};

sim::TreeSnapshot partOf(const sim::TreeSnapshot& tree, std::string_view root) {
  sim::TreeSnapshot part;
  for (const auto& [path, state] : tree) {
    if (path.starts_with(root)) part.emplace(path, state);
  }
  return part;
}

bool isWithin(const sim::TreeSnapshot& part, const sim::TreeSnapshot& whole) {
  return std::ranges::all_of(part, [&](const auto& entry) {
    const auto found = whole.find(entry.first);
    return found != whole.end() && found->second == entry.second;
  });
}

Standing standingOf(const sim::TreeSnapshot& now, const sim::TreeSnapshot& before, const sim::TreeSnapshot& after) {
  if (now == after && !after.empty()) return Standing::fresh;
  if (now == before) return now.empty() ? Standing::absent : Standing::old;
  if (now.empty()) return Standing::absent;
  return isWithin(now, before) ? Standing::partOfOld : Standing::other;
}

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

std::vector<std::string> namesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) names.push_back(entry.path().filename());
  std::ranges::sort(names);
  return names;
}

void requireEqual(int expected, int found, const std::string& what, const std::string& where) {
  require(expected == found,
          where + ": " + what + " were " + std::to_string(expected) + " and are " + std::to_string(found));
}

}  // namespace

std::vector<Standing> standings(const sim::TreeSnapshot& now, const sim::TreeSnapshot& before,
                                const sim::TreeSnapshot& after) {
  std::vector<Standing> result;
  for (const std::string_view root : kComponents) {
    result.push_back(standingOf(partOf(now, root), partOf(before, root), partOf(after, root)));
  }
  return result;
}

std::string describe(const std::vector<Standing>& standings) {
  constexpr std::array<std::string_view, 5> kWords = {"old", "new", "absent", "part of the old one", "neither"};
  constexpr std::array<std::string_view, 4> kNames = {"driver", "broker", "broker's list", "agent's list"};
  std::string text;
  for (std::size_t i = 0; i < standings.size(); ++i) {
    text += (i == 0 ? "" : ", ") + std::string(kNames.at(i)) + " " +
            std::string(kWords.at(static_cast<std::size_t>(standings[i])));
  }
  return text;
}

bool isTool(const std::string& process) {
  constexpr std::array<std::string_view, 5> kTools = {"installer", "pkgutil", "launchctl", "killall", "dscl"};
  return std::ranges::find(kTools, process) != kTools.end();
}

Rest restOf(SoakMachine& soak) {
  Rest rest;
  for (const ProcessFigures& process : soak.census()) {
    rest.processes.push_back(process.name);
    if (process.name == "launchd") rest.launchdDescriptors = process.descriptors;
    if (process.name != "halvo-helper") continue;
    rest.helperDescriptors = process.descriptors;
    rest.helperThreads = process.threads;
  }
  std::ranges::sort(rest.processes);
  rest.database = namesIn(soak.mac().path("/private/var/db/halvo"));
  return rest;
}

void requireSame(const Rest& expected, const Rest& found, const std::string& where) {
  require(expected.processes == found.processes, where + ": the processes were [" + joined(expected.processes) +
                                                     "] and are [" + joined(found.processes) + "]");
  require(expected.database == found.database, where + ": /var/db/halvo held [" + joined(expected.database) +
                                                   "] and holds [" + joined(found.database) + "]");
  requireEqual(expected.launchdDescriptors, found.launchdDescriptors, "launchd's descriptors", where);
  requireEqual(expected.helperDescriptors, found.helperDescriptors, "the helper's descriptors", where);
  requireEqual(expected.helperThreads, found.helperThreads, "the helper's threads", where);
}

}  // namespace halvo::soak
