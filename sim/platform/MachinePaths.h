// Where the simulated Mac keeps its log and the sockets of its Mach services. Inside the machine the paths are fixed;
// a test outside of it moves them. Set before other threads start.
#pragma once

#include <filesystem>

namespace halvo::sim {

// Starts as "/var/log/system.log".
std::filesystem::path systemLogPath();
void setSystemLogPath(std::filesystem::path path);

// The folder with one socket per published Mach service, named like the service. Starts as "/var/run/mach".
std::filesystem::path machServiceDirectory();
void setMachServiceDirectory(std::filesystem::path directory);

}  // namespace halvo::sim
