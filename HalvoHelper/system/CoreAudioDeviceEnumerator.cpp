#include "HalvoHelper/system/CoreAudioDeviceEnumerator.h"

#include <CoreAudio/CoreAudio.h>

namespace halvo {
namespace {

constexpr AudioObjectPropertyAddress kDeviceList = {kAudioHardwarePropertyDevices, kAudioObjectPropertyScopeGlobal,
                                                    kAudioObjectPropertyElementMain};
constexpr AudioObjectPropertyAddress kRunningSomewhere = {
    kAudioDevicePropertyDeviceIsRunningSomewhere, kAudioObjectPropertyScopeGlobal, kAudioObjectPropertyElementMain};

std::vector<AudioDeviceID> allDevices() {
  UInt32 size = 0;
  if (AudioObjectGetPropertyDataSize(kAudioObjectSystemObject, &kDeviceList, 0, nullptr, &size) != 0) return {};
  if (size == 0) return {};
  // The list may shrink before it is read: entries that are not filled stay 0, which no device has as its id.
  std::vector<AudioDeviceID> devices(size / sizeof(AudioDeviceID), kAudioObjectUnknown);
  if (AudioObjectGetPropertyData(kAudioObjectSystemObject, &kDeviceList, 0, nullptr, &size, devices.data()) != 0) {
    return {};
  }
  return devices;
}

bool runsSomewhere(AudioDeviceID device) {
  UInt32 running = 0;
  UInt32 size = sizeof running;
  // The status does not matter: a device that cannot be read leaves `running` at 0.
  static_cast<void>(AudioObjectGetPropertyData(device, &kRunningSomewhere, 0, nullptr, &size, &running));
  return running != 0;
}

}  // namespace

std::vector<bool> CoreAudioDeviceEnumerator::runningSomewhereFlags() const {
  std::vector<bool> flags;
  for (const AudioDeviceID device : allDevices()) flags.push_back(runsSomewhere(device));
  return flags;
}

}  // namespace halvo
