// A clock that moves only when a test moves it.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "HalvoHelper/testing/CallRecorder.h"

namespace halvo {

class FakeClock {
 public:
  // With a recorder, each reading is one line of it: "clock".
  explicit FakeClock(double seconds = 1000.0, std::shared_ptr<CallRecorder> recorder = nullptr)
      : seconds_(std::make_shared<double>(seconds)), recorder_(std::move(recorder)) {}

  void advance(double seconds) const { *seconds_ += seconds; }

  // Reads this clock; may outlive it.
  std::function<double()> reader() const {
    return [seconds = seconds_, recorder = recorder_] {
      if (recorder) recorder->calls.push_back("clock");
      return *seconds;
    };
  }

 private:
  std::shared_ptr<double> seconds_;
  std::shared_ptr<CallRecorder> recorder_;
};

}  // namespace halvo
