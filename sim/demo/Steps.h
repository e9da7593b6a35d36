// The roads of the walk: what each of them does, step by step.
#pragma once

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
void walkWholeRemoval(Stage& stage);
void walkReinstall(Stage& stage);

// Several connections at once.
void walkTurns(Stage& stage);

}  // namespace halvo::sim
