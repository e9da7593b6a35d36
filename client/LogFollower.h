// Shows the lines that are added to a log file while a request runs.
#pragma once

#include <ios>
#include <ostream>
#include <string>

namespace halvo {

class LogFollower {
 public:
  // Remembers where the file ends now, so that only later lines are shown; a file that does not exist yet is shown
  // from its beginning.
  explicit LogFollower(std::string path);

  // Prints the complete lines that were added since the last call. A file that cannot be read is mentioned once; one
  // that became shorter, as when logs are rotated, is shown from its beginning.
  void printNewLines(std::ostream& out);

 private:
  std::string path_;
  std::streamoff position_ = 0;
  bool mentioned_ = false;
};

}  // namespace halvo
