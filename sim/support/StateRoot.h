// Where the simulated Mac keeps what a real one keeps in its kernel and daemons: the authorization database, the
// audio devices, the clock. Inside the simulated Mac this is the folder /sim.
#pragma once

#include <filesystem>

namespace halvo::sim {

// The folder that holds the simulation's state files. Starts as "/sim".
std::filesystem::path stateRoot();

// Moves the state to `root`, for a test that runs outside the simulated Mac. Call before other threads start.
void setStateRoot(std::filesystem::path root);

}  // namespace halvo::sim
