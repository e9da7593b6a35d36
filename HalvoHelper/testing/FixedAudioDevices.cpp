#include "HalvoHelper/testing/FixedAudioDevices.h"

#include <utility>

namespace halvo {

FixedAudioDevices::FixedAudioDevices(std::vector<bool> initialFlags, std::shared_ptr<CallRecorder> recorder)
    : flags(std::move(initialFlags)), recorder_(std::move(recorder)) {}

std::vector<bool> FixedAudioDevices::runningSomewhereFlags() const {
  recorder_->calls.emplace_back("runningSomewhereFlags");
  return flags;
}

}  // namespace halvo
