// Keeps what the code under test writes to the system log. Linking the source into a test program replaces the
// platform's log there.
#pragma once

#include <string>
#include <vector>

namespace halvo {

// Forgets the lines of earlier tests when it begins. Lines may come from any thread; one at a time.
class RecordedSystemLog {
 public:
  RecordedSystemLog();
  RecordedSystemLog(const RecordedSystemLog&) = delete;
  RecordedSystemLog& operator=(const RecordedSystemLog&) = delete;
  ~RecordedSystemLog() = default;

  // A copy of the lines so far, in order.
  std::vector<std::string> lines() const;
};

}  // namespace halvo
