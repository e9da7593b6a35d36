// Collects what a client is answered, as lines, in the order in which it comes. Any thread.
#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "HalvoHelperXPC/HalvoHelperProtocol.h"
#include "transport/ServiceClient.h"

namespace halvo {

class Answers {
 public:
  // Each writes a line: "text ping", "true", "false", "unreachable", "interrupted" or "rejected". The functions may
  // outlive this object.
  [[nodiscard]] TextReply text() const;
  [[nodiscard]] BoolReply boolean() const;
  [[nodiscard]] ServiceClient::FailureHandler failure() const;

  // Waits for the next line and takes it; "nothing came" after half a minute.
  std::string next();
  // The lines that have come and were not taken, without waiting.
  std::vector<std::string> rest();

 private:
  struct Lines {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::string> lines;  // guarded by mutex
    void add(std::string line);
  };
  std::shared_ptr<Lines> shared_ = std::make_shared<Lines>();
};

}  // namespace halvo
