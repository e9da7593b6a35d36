// Somebody who works on a tree while it is being removed.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {

struct SwapOutcome {
  int roundsThatReachedOutside = 0;  // in which something outside the tree was removed
  int swaps = 0;                     // how often a link stood where a directory had been
};

// Has a tree removed that many times while another thread keeps exchanging a directory in it for a link that leads
// outside. Begins no round after `longest`, since file systems differ a hundredfold in speed.
[[nodiscard]] SwapOutcome removeWhileSwapping(const TemporaryDirectory& directory, int rounds,
                                              std::chrono::seconds longest,
                                              const std::function<void(const std::string& tree)>& removeTree);

// Makes that many empty files in an existing directory.
void makeManyFiles(const std::string& directory, int count);

}  // namespace halvo
