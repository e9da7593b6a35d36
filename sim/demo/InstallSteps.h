// The first half of the walk: from the first connection to an install that is rolled back.
#pragma once

#include "sim/demo/Stage.h"

namespace halvo::sim {

void walkFirstContact(Stage& stage);
void walkInstalls(Stage& stage);
void walkRefusedPackages(Stage& stage);
void walkAudio(Stage& stage);
void walkRollback(Stage& stage);
void walkStrangersAndIdleness(Stage& stage);

}  // namespace halvo::sim
