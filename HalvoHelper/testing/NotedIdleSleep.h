// Notes when the Mac may fall asleep, and when not.
#pragma once

#include <memory>
#include <utility>

#include "HalvoHelper/system/IdleSleep.h"
#include "HalvoHelper/testing/CallRecorder.h"

namespace halvo {

class NotedIdleSleep final : public IdleSleep {
 public:
  std::optional<Hold> prevent() const override {
    recorder->calls.emplace_back("idle sleep prevented");
    return refuses ? std::nullopt : std::optional<Hold>(7);
  }
  void allow(Hold hold) const override {
    recorder->calls.emplace_back(hold == 7 ? "idle sleep allowed" : "unknown hold");
  }

  bool refuses = false;
  std::shared_ptr<CallRecorder> recorder = std::make_shared<CallRecorder>();
};

}  // namespace halvo
