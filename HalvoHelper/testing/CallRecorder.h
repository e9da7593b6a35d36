// One list into which several doubles of a test write, so that the order between them can be seen.
#pragma once

#include <string>
#include <vector>

namespace halvo {

// Shared by file system double, runner double and log of one test. Not for several threads.
struct CallRecorder {
  std::vector<std::string> calls;
};

}  // namespace halvo
