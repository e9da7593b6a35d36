#include "client/LogFollower.h"

#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "client/VisibleText.h"

namespace halvo {
namespace {

// 0 for a file that is not there.
std::streamoff sizeOf(const std::string& path) {
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  return error ? 0 : static_cast<std::streamoff>(size);
}

}  // namespace

LogFollower::LogFollower(std::string path) : path_(std::move(path)), position_(sizeOf(path_)) {}

void LogFollower::printNewLines(std::ostream& out) {
  const std::streamoff size = sizeOf(path_);
  if (size < position_) position_ = 0;
  if (size == position_) return;
  std::ifstream file(path_, std::ios::binary);
  if (!file) {
    if (!std::exchange(mentioned_, true)) {
      out << "(the log " << path_ << " cannot be read by this user)\n" << std::flush;
    }
    return;
  }
  file.seekg(position_);
  std::string line;
  // A line without its line feed is still being written: it is shown when it is complete.
  while (std::getline(file, line) && !file.eof()) {
    out << "  " << visibleText(line) << "\n";
    position_ += static_cast<std::streamoff>(line.size() + 1);
  }
  out.flush();
}

}  // namespace halvo
