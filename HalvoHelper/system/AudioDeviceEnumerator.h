// Asks which audio devices are in use.
#pragma once

#include <vector>

namespace halvo {

class AudioDeviceEnumerator {
 public:
  AudioDeviceEnumerator() = default;
  AudioDeviceEnumerator(const AudioDeviceEnumerator&) = delete;
  AudioDeviceEnumerator& operator=(const AudioDeviceEnumerator&) = delete;
  virtual ~AudioDeviceEnumerator() = default;

  // One entry for each audio device of the system, true if any process has it running. Empty when nobody can say.
  // May block while the audio daemon is restarting.
  virtual std::vector<bool> runningSomewhereFlags() const = 0;
};

}  // namespace halvo
