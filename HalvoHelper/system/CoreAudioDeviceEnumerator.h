// Reads the device list of Core Audio's hardware abstraction layer. Stateless.
#pragma once

#include "HalvoHelper/system/AudioDeviceEnumerator.h"

namespace halvo {

// A device that cannot be read counts as not running (kAudioDevicePropertyDeviceIsRunningSomewhere).
class CoreAudioDeviceEnumerator final : public AudioDeviceEnumerator {
 public:
  std::vector<bool> runningSomewhereFlags() const override;
};

}  // namespace halvo
