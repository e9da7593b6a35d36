#include "sim/objc/tests/LogCapture.h"

#include <mutex>

#include "platform/mac/FoundationText.h"

namespace halvo::sim {
namespace {

std::mutex mutex;
std::vector<std::string> captured;  // guarded by mutex

// "2026-11-21 04:00:00.000 program[12:34] text\n"
std::string withoutPrefix(const std::string& entry) {
  const std::size_t bracket = entry.find("] ");
  const std::size_t start = bracket == std::string::npos ? 0 : bracket + 2;
  const std::size_t end = entry.ends_with('\n') ? entry.size() - 1 : entry.size();
  return entry.substr(start, end - start);
}

void capture(NSString* entry) {
  const std::lock_guard lock(mutex);
  captured.push_back(withoutPrefix(textFromFoundation(entry)));
}

}  // namespace

LogCapture::LogCapture() : original_(_NSLog_printf_handler) {
  const std::lock_guard lock(mutex);
  captured.clear();
  _NSLog_printf_handler = capture;
}

LogCapture::~LogCapture() { _NSLog_printf_handler = original_; }

std::vector<std::string> LogCapture::lines() const {
  const std::lock_guard lock(mutex);
  return captured;
}

}  // namespace halvo::sim
