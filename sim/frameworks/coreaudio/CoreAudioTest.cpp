#include <CoreAudio/CoreAudio.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/support/MachinePaths.h"

namespace halvo::sim {
namespace {

using testing::ElementsAre;

constexpr AudioObjectPropertyAddress kList = {kAudioHardwarePropertyDevices, kAudioObjectPropertyScopeGlobal,
                                              kAudioObjectPropertyElementMain};
constexpr AudioObjectPropertyAddress kRunning = {kAudioDevicePropertyDeviceIsRunningSomewhere,
                                                 kAudioObjectPropertyScopeGlobal, kAudioObjectPropertyElementMain};

class CoreAudioTest : public testing::Test {
 protected:
  CoreAudioTest() { setStateRoot(state_.path()); }

  static UInt32 listSize() {
    UInt32 size = 99;
    EXPECT_EQ(AudioObjectGetPropertyDataSize(kAudioObjectSystemObject, &kList, 0, nullptr, &size), 0);
    return size;
  }

  static std::vector<AudioObjectID> devices(UInt32 room) {
    std::vector<AudioObjectID> list(room);
    UInt32 size = room * static_cast<UInt32>(sizeof(AudioObjectID));
    EXPECT_EQ(AudioObjectGetPropertyData(kAudioObjectSystemObject, &kList, 0, nullptr, &size, list.data()), 0);
    list.resize(size / sizeof(AudioObjectID));
    return list;
  }

  static OSStatus readRunning(AudioObjectID device, UInt32& value) {
    UInt32 size = sizeof value;
    return AudioObjectGetPropertyData(device, &kRunning, 0, nullptr, &size, &value);
  }

  TemporaryDirectory state_;
};

TEST_F(CoreAudioTest, AMachineWithoutTheFileHasNoDevices) {
  EXPECT_EQ(listSize(), 0U);
  EXPECT_THAT(devices(2), ElementsAre());
}

TEST_F(CoreAudioTest, EveryLineIsADevice) {
  state_.write("audio-devices", "0\n1\n!\n");

  EXPECT_EQ(listSize(), 12U);
  EXPECT_THAT(devices(5), ElementsAre(41, 42, 43));
}

TEST_F(CoreAudioTest, ASmallBufferTakesWhatFits) {
  state_.write("audio-devices", "0\n1\n1\n");

  EXPECT_THAT(devices(2), ElementsAre(41, 42));
}

TEST_F(CoreAudioTest, ADeviceSaysWhetherItRuns) {
  state_.write("audio-devices", "0\n1\n");
  UInt32 first = 9;
  UInt32 second = 9;

  EXPECT_EQ(readRunning(41, first), 0);
  EXPECT_EQ(readRunning(42, second), 0);
  EXPECT_EQ(first, 0U);
  EXPECT_EQ(second, 1U);
}

TEST_F(CoreAudioTest, AnUnreadableDeviceLeavesTheValueAlone) {
  state_.write("audio-devices", "!\n");
  UInt32 value = 9;

  EXPECT_EQ(readRunning(41, value), kAudioHardwareUnspecifiedError);
  EXPECT_EQ(value, 9U);
}

TEST_F(CoreAudioTest, ADeviceThatIsNotThereIsABadObject) {
  state_.write("audio-devices", "1\n");
  UInt32 value = 9;

  EXPECT_EQ(readRunning(42, value), kAudioHardwareBadObjectError);
  EXPECT_EQ(readRunning(kAudioObjectUnknown, value), kAudioHardwareBadObjectError);
  EXPECT_EQ(value, 9U);
}

TEST_F(CoreAudioTest, TheListFailsWhenTheDaemonDoesNotAnswer) {
  state_.write("audio-devices", "fail\n");
  UInt32 size = 4;
  AudioObjectID device = 7;

  EXPECT_EQ(AudioObjectGetPropertyDataSize(kAudioObjectSystemObject, &kList, 0, nullptr, &size),
            kAudioHardwareUnspecifiedError);
  EXPECT_EQ(AudioObjectGetPropertyData(kAudioObjectSystemObject, &kList, 0, nullptr, &size, &device),
            kAudioHardwareUnspecifiedError);
  EXPECT_EQ(device, 7U);
}

TEST_F(CoreAudioTest, AnotherPropertyIsUnknown) {
  state_.write("audio-devices", "1\n");
  // Whether this very process uses the device; the list of one direction.
  constexpr AudioObjectPropertyAddress kOwnUse = {0x676F696E, kAudioObjectPropertyScopeGlobal,
                                                  kAudioObjectPropertyElementMain};
  constexpr AudioObjectPropertyAddress kInput = {kAudioHardwarePropertyDevices, 0x696E7074,
                                                 kAudioObjectPropertyElementMain};
  UInt32 value = 0;
  UInt32 size = sizeof value;

  EXPECT_EQ(AudioObjectGetPropertyData(41, &kOwnUse, 0, nullptr, &size, &value), kAudioHardwareUnknownPropertyError);
  EXPECT_EQ(AudioObjectGetPropertyDataSize(kAudioObjectSystemObject, &kInput, 0, nullptr, &size),
            kAudioHardwareUnknownPropertyError);
}

TEST_F(CoreAudioTest, AWrongSizeIsRefused) {
  state_.write("audio-devices", "1\n");
  std::array<UInt32, 2> value{};
  UInt32 size = sizeof value;

  EXPECT_EQ(AudioObjectGetPropertyData(41, &kRunning, 0, nullptr, &size, value.data()),
            kAudioHardwareBadPropertySizeError);
}

}  // namespace
}  // namespace halvo::sim
