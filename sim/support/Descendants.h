// The processes that come of this one.
#pragma once

namespace halvo::sim {

// Kills and collects every child of this process, and what falls to it because their parents ended: this process must
// be the reaper of its descendants. Gives up after a few seconds on what cannot be killed.
void endDescendants();

}  // namespace halvo::sim
