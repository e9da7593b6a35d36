#include "HalvoHelper/system/AudioActivity.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace halvo {

AudioActivity::AudioActivity(std::shared_ptr<const AudioDeviceEnumerator> enumerator)
    : enumerator_(std::move(enumerator)) {}

bool AudioActivity::anyDeviceRunning() const {
  const std::vector<bool> flags = enumerator_->runningSomewhereFlags();
  return std::ranges::find(flags, true) != flags.end();
}

}  // namespace halvo
