// Catches what is written to the system log, each line from behind the log's own prefix.
#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <vector>

namespace halvo::sim {

// One at a time. Lines of other threads are caught as well.
class LogCapture {
 public:
  LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;
  ~LogCapture();

  std::vector<std::string> lines() const;

 private:
  NSLog_printf_handler* const original_;
};

}  // namespace halvo::sim
