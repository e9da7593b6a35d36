// Where launchd finds and leaves things.
#pragma once

#include <filesystem>

namespace halvo::sim {

struct LaunchdPaths {
  std::filesystem::path state;          // what is scripted and shown, see docs/simulator.md
  std::filesystem::path machServices;   // one listening socket per Mach service
  std::filesystem::path systemDaemons;  // what comes with the system
  std::filesystem::path daemons;
  std::filesystem::path agents;
  std::filesystem::path users;  // their homes
};

// The folders of a machine whose file system starts at `root`, which is "/" except in tests of launchd itself.
inline LaunchdPaths launchdPaths(const std::filesystem::path& root) {
  return {.state = root / "sim",
          .machServices = root / "var/run/mach",
          .systemDaemons = root / "System/Library/LaunchDaemons",
          .daemons = root / "Library/LaunchDaemons",
          .agents = root / "Library/LaunchAgents",
          .users = root / "Users"};
}

}  // namespace halvo::sim
