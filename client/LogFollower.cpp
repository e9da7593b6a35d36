#include "client/LogFollower.h"

#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

namespace halvo {

LogFollower::LogFollower(std::string path) : path_(std::move(path)) {
  std::error_code error;
  const auto size = std::filesystem::file_size(path_, error);
  if (!error) position_ = static_cast<std::streamoff>(size);
}

void LogFollower::printNewLines(std::ostream& out) {
  std::error_code error;
  if (!std::filesystem::exists(path_, error)) return;
  std::ifstream file(path_, std::ios::binary);
  if (!file) {
    if (!std::exchange(mentioned_, true)) out << "(the log " << path_ << " cannot be read by this user)\n";
    return;
  }
  file.seekg(position_);
  std::string line;
  // A line without its line feed is still being written: it is shown when it is complete.
  while (std::getline(file, line) && !file.eof()) {
    out << "  " << line << "\n";
    position_ += static_cast<std::streamoff>(line.size() + 1);
  }
  out.flush();
}

}  // namespace halvo
