#include <CoreAudio/CoreAudio.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "sim/frameworks/testing/Instrumentation.h"
#include "sim/support/MachinePaths.h"

namespace halvo::sim {
namespace {

constexpr AudioObjectID kFirstDevice = 41;

// The devices of the state file, a line each: "1" runs, "0" does not, "!" cannot be read. The single word "fail"
// stands for an audio daemon that does not answer.
struct Devices {
  bool answering = true;
  std::vector<std::string> states;
};

Devices readDevices() {
  std::ifstream file(stateRoot() / "audio-devices");
  Devices devices;
  std::string word;
  while (file >> word) devices.states.push_back(word);
  devices.answering = devices.states != std::vector<std::string>{"fail"};
  return devices;
}

struct Qualifier {
  UInt32 size;
  const void* data;
};

std::string describe(AudioObjectID object, const AudioObjectPropertyAddress& address, const Qualifier& qualifier) {
  const auto characters = [](UInt32 code) {
    std::string text;
    for (const unsigned shift : {24U, 16U, 8U, 0U}) text += static_cast<char>(code >> shift & 0xFFU);
    return text;
  };
  return "object=" + std::to_string(object) + " selector=" + characters(address.mSelector) +
         " scope=" + characters(address.mScope) + " element=" + std::to_string(address.mElement) +
         (qualifier.size == 0 && qualifier.data == nullptr ? "" : " qualifier=" + std::to_string(qualifier.size));
}

bool isGlobal(const AudioObjectPropertyAddress& address) {
  return address.mScope == kAudioObjectPropertyScopeGlobal && address.mElement == kAudioObjectPropertyElementMain;
}

bool isDeviceList(AudioObjectID object, const AudioObjectPropertyAddress& address) {
  return object == kAudioObjectSystemObject && address.mSelector == kAudioHardwarePropertyDevices && isGlobal(address);
}

OSStatus readListSize(UInt32& size) {
  const Devices devices = readDevices();
  if (!devices.answering) return kAudioHardwareUnspecifiedError;
  const std::size_t count = probe::limitedDevices("AudioObjectGetPropertyDataSize", devices.states.size());
  size = static_cast<UInt32>(count * sizeof(AudioObjectID));
  return kAudioHardwareNoError;
}

OSStatus readDeviceList(UInt32& size, void* data) {
  const Devices devices = readDevices();
  if (!devices.answering) return kAudioHardwareUnspecifiedError;
  const std::size_t count = probe::limitedDevices("AudioObjectGetPropertyData",
                                                  std::min(devices.states.size(), size / sizeof(AudioObjectID)));
  for (std::size_t i = 0; i < count; ++i) {
    const auto device = static_cast<AudioObjectID>(kFirstDevice + i);
    std::memcpy(static_cast<char*>(data) + i * sizeof device, &device, sizeof device);
  }
  size = static_cast<UInt32>(count * sizeof(AudioObjectID));
  return kAudioHardwareNoError;
}

OSStatus readIsRunning(AudioObjectID object, const AudioObjectPropertyAddress& address, UInt32& size, void* data) {
  const Devices devices = readDevices();
  if (!devices.answering || object < kFirstDevice || object - kFirstDevice >= devices.states.size()) {
    return kAudioHardwareBadObjectError;
  }
  if (address.mSelector != kAudioDevicePropertyDeviceIsRunningSomewhere || !isGlobal(address)) {
    return kAudioHardwareUnknownPropertyError;
  }
  if (size != sizeof(UInt32)) return kAudioHardwareBadPropertySizeError;
  const std::string& state = devices.states[object - kFirstDevice];
  if (state != "0" && state != "1") return kAudioHardwareUnspecifiedError;
  const UInt32 running = state == "1" ? 1 : 0;
  std::memcpy(data, &running, sizeof running);
  return kAudioHardwareNoError;
}

}  // namespace
}  // namespace halvo::sim

using namespace halvo::sim;

extern "C" {

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID inObjectID, const AudioObjectPropertyAddress* inAddress,
                                        UInt32 inQualifierDataSize, const void* inQualifierData, UInt32* outDataSize) {
  const auto scripted = observe("AudioObjectGetPropertyDataSize", [&] {
    return describe(inObjectID, *inAddress, {inQualifierDataSize, inQualifierData});
  });
  if (scripted) return scripted->store(outDataSize);
  if (!isDeviceList(inObjectID, *inAddress)) return kAudioHardwareUnknownPropertyError;
  return readListSize(*outDataSize);
}

OSStatus AudioObjectGetPropertyData(AudioObjectID inObjectID, const AudioObjectPropertyAddress* inAddress,
                                    UInt32 inQualifierDataSize, const void* inQualifierData, UInt32* ioDataSize,
                                    void* outData) {
  const auto scripted = observe("AudioObjectGetPropertyData", [&] {
    return describe(inObjectID, *inAddress, {inQualifierDataSize, inQualifierData});
  });
  if (scripted) return scripted->store(ioDataSize);
  if (isDeviceList(inObjectID, *inAddress)) return readDeviceList(*ioDataSize, outData);
  return readIsRunning(inObjectID, *inAddress, *ioDataSize, outData);
}

}  // extern "C"
