// Where the simulated Mac keeps things that processes share. Inside the machine these places are fixed; a test outside
// of it moves them, before other threads start.
#pragma once

#include <filesystem>

namespace halvo::sim {

// The folder of what a real Mac keeps in its kernel and daemons: the authorization database, the audio devices, the
// clock. Starts as "/sim".
std::filesystem::path stateRoot();
void setStateRoot(std::filesystem::path root);

// Starts as "/var/log/system.log".
std::filesystem::path systemLogPath();
void setSystemLogPath(std::filesystem::path path);

// The folder with one socket per published Mach service, named like the service. Starts as "/var/run/mach".
std::filesystem::path machServiceDirectory();
void setMachServiceDirectory(std::filesystem::path directory);

}  // namespace halvo::sim
