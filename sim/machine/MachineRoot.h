// A simulated Mac as a folder of the host: building one, and putting its application back.
#pragma once

#include <filesystem>
#include <optional>

#include "sim/machine/MachineFiles.h"

namespace halvo::sim {

// A fresh machine in `root`, which must not exist yet or be empty: the folders and accounts of a Mac, the stand-in
// tools, Halvo.app with the helper registered, and scripted state that lets everything succeed. Nothing of the product
// is installed. What fails leaves nothing behind.
std::optional<MachineProblem> buildMachine(const std::filesystem::path& root);

// Puts Halvo.app back and registers its helper, as a user does who downloads the application again: at once when the
// machine runs, else for its next start.
std::optional<MachineProblem> putApplicationBack(const std::filesystem::path& root);

// Whether `root` is a machine, told by its state folder and launchd.
bool isMachine(const std::filesystem::path& root);

}  // namespace halvo::sim
