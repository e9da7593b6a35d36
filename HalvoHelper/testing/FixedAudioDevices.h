// Audio devices whose state the test sets.
#pragma once

#include <memory>
#include <vector>

#include "HalvoHelper/system/AudioDeviceEnumerator.h"
#include "HalvoHelper/testing/CallRecorder.h"

namespace halvo {

class FixedAudioDevices final : public AudioDeviceEnumerator {
 public:
  explicit FixedAudioDevices(std::vector<bool> flags = {},
                             std::shared_ptr<CallRecorder> recorder = std::make_shared<CallRecorder>());

  std::vector<bool> runningSomewhereFlags() const override;

  // What the next question is answered with. Empty also stands for an audio daemon that does not answer.
  std::vector<bool> flags;

 private:
  std::shared_ptr<CallRecorder> recorder_;
};

}  // namespace halvo
