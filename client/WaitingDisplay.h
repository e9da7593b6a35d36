// What a person sees while a request takes its time.
#pragma once

#include <chrono>

#include "client/Commands.h"
#include "client/LogFollower.h"

namespace halvo {

// Says once that the request is waited for, and shows the new lines of its log. On a terminal the last line is the time
// that has passed, and goes when this object does.
class WaitingDisplay {
 public:
  // The time counts from here. Both must outlive this object.
  WaitingDisplay(const CommandLine& command, const Surroundings& surroundings);
  WaitingDisplay(const WaitingDisplay&) = delete;
  WaitingDisplay& operator=(const WaitingDisplay&) = delete;
  ~WaitingDisplay();

  // Shows what is new.
  void look();

 private:
  void eraseTime();
  void showTime();

  const CommandLine& command_;
  const Surroundings& surroundings_;
  const std::chrono::steady_clock::time_point begun_;
  LogFollower log_;
  bool saidSo_ = false;
  bool showsTime_ = false;
};

}  // namespace halvo
