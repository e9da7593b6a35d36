// Shows the lines that are added to a log file while a request runs.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <utility>

namespace halvo {

class InputFile;

class LogFollower {
 public:
  // Remembers where the file ends now, so that only later lines are shown; a file that does not exist yet is shown
  // from its beginning.
  explicit LogFollower(std::string path);

  // Prints the complete lines that were added since the last call. A file that cannot be read is mentioned once; one
  // that became shorter or is another one by now, as when logs are rotated, is shown from its beginning.
  void printNewLines(std::ostream& err);

 private:
  void mention(int error, std::ostream& err);

  std::string path_;
  std::pair<dev_t, ino_t> identity_;  // of the file that was seen last
  std::int64_t position_ = 0;
  bool mentioned_ = false;
};

}  // namespace halvo
