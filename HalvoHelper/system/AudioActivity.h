// Decides whether restarting the audio daemon would interrupt somebody.
#pragma once

#include <memory>

#include "HalvoHelper/system/AudioDeviceEnumerator.h"

namespace halvo {

class AudioActivity {
 public:
  explicit AudioActivity(std::shared_ptr<const AudioDeviceEnumerator> enumerator);

  // Whether any device is running in any process. False when that cannot be found out: unlike every other check, this
  // one fails open, since it guards a user's comfort and must not keep an update out.
  bool anyDeviceRunning() const;

 private:
  std::shared_ptr<const AudioDeviceEnumerator> enumerator_;
};

}  // namespace halvo
