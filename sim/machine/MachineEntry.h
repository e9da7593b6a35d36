// How a process of the host gets into a machine: bubblewrap, in the way that this host allows.
#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace halvo::sim {

enum class EntryWay {
  root,             // as root, with a process namespace of its own: several accounts
  userNamespace,    // in a user namespace in which only uid 0 exists
  sharedProcesses,  // the same, with the host's process table, where a fresh one is forbidden
};

// In the order in which they are to be tried.
inline constexpr std::array kEntryWays = {EntryWay::root, EntryWay::userNamespace, EntryWay::sharedProcesses};

std::string describe(EntryWay way);

// The command line that runs `command` in the machine at `root`.
std::vector<std::string> entryCommand(EntryWay way, const std::filesystem::path& root,
                                      const std::vector<std::string>& command);

// Really enters the machine and looks around. Why that does not work, or nothing.
std::optional<std::string> obstacleOf(EntryWay way, const std::filesystem::path& root);

// What a person can do when no way works.
std::string entryAdvice();

}  // namespace halvo::sim
