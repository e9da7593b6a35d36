#include "HalvoHelper/testing/RecordedSystemLog.h"

#include <mutex>

#include "platform/SystemLog.h"

namespace halvo {
namespace {

struct Log {
  std::mutex lock;
  std::vector<std::string> lines;  // guarded by lock
};

Log& theLog() {
  static Log log;
  return log;
}

}  // namespace

void halvoSystemLog(std::string_view line) {
  const std::scoped_lock guard(theLog().lock);
  theLog().lines.emplace_back(line);
}

RecordedSystemLog::RecordedSystemLog() {
  const std::scoped_lock guard(theLog().lock);
  theLog().lines.clear();
}

std::vector<std::string> RecordedSystemLog::lines() const {
  const std::scoped_lock guard(theLog().lock);
  return theLog().lines;
}

}  // namespace halvo
