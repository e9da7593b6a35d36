// The steps of the walk, in their order.
#pragma once

#include <string>

#include "sim/demo/Stage.h"

namespace halvo::sim {

// From the first connection to an install that is rolled back.
void walkFirstContact(Stage& stage);
void walkInstalls(Stage& stage);
void walkRefusedPackages(Stage& stage);
void walkAudio(Stage& stage);
void walkRollback(Stage& stage);
void walkStrangersAndIdleness(Stage& stage);

// The product is removed, part by part, the helper takes itself away, and a new installation starts over.
void walkUninstall(Stage& stage);
void walkBundleRemoval(Stage& stage);
// An application that has started goes on when its bundle is removed. Here each request is a program of its own, so a
// copy of it that lies elsewhere stands in: its path.
std::string keepApplicationRunning(Stage& stage);
void walkFinalRemoval(Stage& stage, const std::string& runningApplication);
void walkReinstall(Stage& stage);

}  // namespace halvo::sim
