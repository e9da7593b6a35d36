// The walk as a whole: which roads it has, in their order, and which of them a single step needs.
#pragma once

#include <functional>
#include <set>
#include <vector>

#include "sim/demo/Step.h"

namespace halvo::sim {

// Steps are counted from 1.
int stepCount();

// Walks in a fresh machine and hands each step to `show` when it is over; answers those that it has shown. Without
// `wanted` that is all of them. Otherwise only the roads are walked that lead to the wanted steps, and only these are
// shown, and what went wrong on the way to them.
std::vector<Step> walk(const std::set<int>& wanted, const std::function<void(const Step&)>& show);

}  // namespace halvo::sim
