// Writes the progress lines of one kind of operation: to the system log, and to a file that support asks for.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

namespace halvo {

// "2026-02-11 09:30:12 +0000": always universal time, whole seconds.
[[nodiscard]] std::string halvoLogDate(std::chrono::system_clock::time_point time);

class OperationLog {
 public:
  using Clock = std::function<std::chrono::system_clock::time_point()>;

  explicit OperationLog(std::string path, Clock now = std::chrono::system_clock::now);

  // Appends one line with a single write, so that lines of concurrent operations stay whole. The message goes in as it
  // is, line feeds included. A missing file is made, for everybody to read as far as the umask lets them. A link to a
  // file is followed; one that leads nowhere is replaced by a file. Nothing is written to a FIFO, a device or a
  // directory. Failures are ignored, and nothing is waited for: logging neither fails nor holds an operation. Any
  // thread.
  void write(std::string_view message) const;

 private:
  std::string path_;
  Clock now_;
};

}  // namespace halvo
