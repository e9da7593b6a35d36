// Where the simulated Mac keeps things that processes share. Inside the machine these places are fixed; a test outside
// of it moves them, before other threads start.
#pragma once

#include <filesystem>
#include <utility>

namespace halvo::sim {

struct MachinePaths {
  // The folder of what a real Mac keeps in its kernel and daemons: the authorization database, the audio devices, the
  // clock.
  std::filesystem::path state = "/sim";
  std::filesystem::path systemLog = "/var/log/system.log";
  // The folder with one socket per published Mach service, named like the service.
  std::filesystem::path machServices = "/var/run/mach";
};

inline MachinePaths& machinePaths() {
  static MachinePaths paths;
  return paths;
}

inline std::filesystem::path stateRoot() { return machinePaths().state; }
inline void setStateRoot(std::filesystem::path root) { machinePaths().state = std::move(root); }

}  // namespace halvo::sim
