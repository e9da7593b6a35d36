// A tree before and after, side by side.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "sim/harness/TreeSnapshot.h"

namespace halvo::sim {

struct TreeRow {
  std::string path;
  std::size_t depth;   // below the first of its ancestors that has a row
  bool leads;          // to something below it that is not the same
  std::string change;  // "added", "removed", "changed", or "same"
  std::string before;  // what was there, in a few words; empty for nothing
  std::string after;
  bool operator==(const TreeRow&) const = default;
};

// One row for everything that was there before or is there after, in the order of a tree: each folder before what it
// holds.
std::vector<TreeRow> treeRows(const TreeSnapshot& before, const TreeSnapshot& after);

}  // namespace halvo::sim
