// Somebody who works on a tree while it is being removed.
#pragma once

#include <functional>
#include <string>

#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {

struct SwapOutcome {
  int roundsThatReachedOutside = 0;  // in which something outside the tree was removed
  int swaps = 0;                     // rounds in which a link took the place of a directory
};

// Has trees removed, each while another thread exchanges a directory in it for a link that leads outside: once the
// removal is under way, so that it has seen the directory before. How often the thread comes in time is up to the
// scheduler: goes on until it did so that many times, or for 10,000 trees.
[[nodiscard]] SwapOutcome removeWhileSwapping(const TemporaryDirectory& directory, int swapsWanted,
                                              const std::function<void(const std::string& tree)>& removeTree);

// Makes that many empty files in an existing directory.
void makeManyFiles(const std::string& directory, int count);

}  // namespace halvo
