// The walk as a whole, and the roads that it has.
#pragma once

#include <functional>
#include <set>
#include <vector>

#include "sim/demo/Step.h"

namespace halvo::sim {

class Stage;

// Steps are counted from 1.
int stepCount();

// Walks in a fresh machine and hands each step to `show` when it is over; answers those that it has shown. Without
// `wanted` that is all of them. Otherwise only the roads are walked that lead to the wanted steps, and only these are
// shown, and what went wrong on the way to them.
std::vector<Step> walk(const std::set<int>& wanted, const std::function<void(const Step&)>& show);

// What each road does, step by step. From the first connection to an install that is rolled back:
void walkFirstContact(Stage& stage);
void walkInstalls(Stage& stage);
void walkRefusedPackages(Stage& stage);
void walkAudio(Stage& stage);
void walkRollback(Stage& stage);
void walkStrangersAndIdleness(Stage& stage);
// The product is removed, part by part, the helper takes itself away, and a new installation starts over:
void walkUninstall(Stage& stage);
void walkWholeRemoval(Stage& stage);
void walkReinstall(Stage& stage);
// Several connections at once:
void walkTurns(Stage& stage);

}  // namespace halvo::sim
