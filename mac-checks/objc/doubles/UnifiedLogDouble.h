// Stands in for the unified log behind <os/log.h>.
#pragma once

#include <string>
#include <vector>

namespace halvo::sim {

// Catches what is written to the log, of other threads as well, each entry as a reader without special rights is shown
// it: an argument that its format does not call public is "<private>"; a conversion other than "%s" makes the whole
// entry say so. One at a time.
class LogCapture {
 public:
  LogCapture();

  // Oldest first.
  std::vector<std::string> lines() const;
};

}  // namespace halvo::sim
