#include "HalvoHelper/system/CoreAudioDeviceEnumerator.h"

#include <CoreAudio/CoreAudio.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/frameworks/testing/FrameworkProbe.h"
#include "sim/support/MachinePaths.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CoreAudioDeviceEnumeratorTest : public testing::Test {
 protected:
  CoreAudioDeviceEnumeratorTest() { sim::setStateRoot(directory_.path()); }
  ~CoreAudioDeviceEnumeratorTest() override { sim::setStateRoot(rootBefore_); }

  // A line for each device: 1 runs, 0 does not, ! cannot be read.
  void setDevices(const std::string& lines) const { directory_.makeFile("audio-devices", lines); }

  std::filesystem::path rootBefore_ = sim::stateRoot();
  TemporaryDirectory directory_;
  sim::FrameworkProbe probe_;
  CoreAudioDeviceEnumerator enumerator_;
};

TEST_F(CoreAudioDeviceEnumeratorTest, FlagsComeInTheOrderOfTheDevices) {
  setDevices("0\n1\n0\n1\n1\n");

  EXPECT_THAT(enumerator_.runningSomewhereFlags(), ElementsAre(false, true, false, true, true));
}

TEST_F(CoreAudioDeviceEnumeratorTest, AsksForSizeListAndEachDeviceOnceAtTheseAddresses) {
  setDevices("0\n1\n");

  enumerator_.runningSomewhereFlags();

  EXPECT_THAT(probe_.calls(), ElementsAre("AudioObjectGetPropertyDataSize object=1 selector=dev# scope=glob element=0",
                                          "AudioObjectGetPropertyData object=1 selector=dev# scope=glob element=0",
                                          "AudioObjectGetPropertyData object=41 selector=gone scope=glob element=0",
                                          "AudioObjectGetPropertyData object=42 selector=gone scope=glob element=0"));
}

TEST_F(CoreAudioDeviceEnumeratorTest, WithoutDevicesTheListIsNotRead) {
  setDevices("");

  EXPECT_THAT(enumerator_.runningSomewhereFlags(), IsEmpty());

  EXPECT_THAT(probe_.calls(),
              ElementsAre("AudioObjectGetPropertyDataSize object=1 selector=dev# scope=glob element=0"));
}

TEST_F(CoreAudioDeviceEnumeratorTest, AFailingSizeQuestionFindsNoDevice) {
  setDevices("1\n");
  probe_.failNext("AudioObjectGetPropertyDataSize", kAudioHardwareNotRunningError);

  EXPECT_THAT(enumerator_.runningSomewhereFlags(), IsEmpty());

  EXPECT_EQ(probe_.calls().size(), 1U);
}

TEST_F(CoreAudioDeviceEnumeratorTest, AFailingListFindsNoDevice) {
  setDevices("1\n");
  probe_.failNext("AudioObjectGetPropertyData", kAudioHardwareUnspecifiedError);

  EXPECT_THAT(enumerator_.runningSomewhereFlags(), IsEmpty());

  EXPECT_EQ(probe_.calls().size(), 2U);
}

TEST_F(CoreAudioDeviceEnumeratorTest, ADaemonThatDoesNotAnswerFindsNoDevice) {
  setDevices("fail");

  EXPECT_THAT(enumerator_.runningSomewhereFlags(), IsEmpty());
}

TEST_F(CoreAudioDeviceEnumeratorTest, ADeviceThatCannotBeReadCountsAsSilentAndTheOthersAreAsked) {
  setDevices("!\n1\n!\n");

  EXPECT_THAT(enumerator_.runningSomewhereFlags(), ElementsAre(false, true, false));
}

TEST_F(CoreAudioDeviceEnumeratorTest, DevicesThatVanishBetweenTheQuestionsCountAsSilent) {
  setDevices("1\n1\n1\n");
  probe_.shrinkDeviceList(1);

  EXPECT_THAT(enumerator_.runningSomewhereFlags(), ElementsAre(true, false, false));

  EXPECT_EQ(probe_.calls().at(3), "AudioObjectGetPropertyData object=0 selector=gone scope=glob element=0");
}

TEST_F(CoreAudioDeviceEnumeratorTest, DevicesThatComeBetweenTheQuestionsAreLeftOut) {
  setDevices("0\n1\n1\n");
  probe_.growDeviceList(2);

  EXPECT_THAT(enumerator_.runningSomewhereFlags(), ElementsAre(false, true));

  EXPECT_EQ(probe_.calls().size(), 4U);
}

TEST_F(CoreAudioDeviceEnumeratorTest, AListThatNoLongerFitsFindsNoDevice) {
  setDevices("1\n1\n");
  probe_.growDeviceList(1);
  probe_.failNext("AudioObjectGetPropertyData", kAudioHardwareBadPropertySizeError);

  EXPECT_THAT(enumerator_.runningSomewhereFlags(), IsEmpty());
}

TEST_F(CoreAudioDeviceEnumeratorTest, TheDevicesAreReadAnewEachTime) {
  setDevices("0\n");
  const auto before = enumerator_.runningSomewhereFlags();
  setDevices("1\n");

  EXPECT_THAT(before, ElementsAre(false));
  EXPECT_THAT(enumerator_.runningSomewhereFlags(), ElementsAre(true));
}

}  // namespace
}  // namespace halvo
