// Catches what is written to the system log, each entry as a reader of the log is shown it.
#pragma once

#include <string>
#include <vector>

namespace halvo::sim {

// One at a time. Entries of other threads are caught as well.
class LogCapture {
 public:
  LogCapture();

  std::vector<std::string> lines() const;
};

}  // namespace halvo::sim
