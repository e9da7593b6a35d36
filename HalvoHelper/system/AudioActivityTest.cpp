#include "HalvoHelper/system/AudioActivity.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>

#include "HalvoHelper/testing/FixedAudioDevices.h"

namespace halvo {
namespace {

struct AudioRow {
  std::vector<bool> flags;
  bool running;
};
void PrintTo(const AudioRow& row, std::ostream* out) { *out << testing::PrintToString(row.flags); }

class AudioTable : public testing::TestWithParam<AudioRow> {};

TEST_P(AudioTable, AnyRunningDeviceCounts) {
  const auto devices = std::make_shared<FixedAudioDevices>(GetParam().flags);

  EXPECT_EQ(AudioActivity(devices).anyDeviceRunning(), GetParam().running);
}

INSTANTIATE_TEST_SUITE_P(Devices, AudioTable,
                         testing::Values(AudioRow{{}, false}, AudioRow{{false}, false}, AudioRow{{true}, true},
                                         AudioRow{{false, false}, false}, AudioRow{{false, true}, true},
                                         AudioRow{{true, false, false}, true}));

TEST(AudioActivityTest, TheDevicesAreAskedAnewEachTime) {
  const auto devices = std::make_shared<FixedAudioDevices>(std::vector<bool>{true});
  const AudioActivity audio(devices);

  const bool before = audio.anyDeviceRunning();
  devices->flags = {false};
  const bool after = audio.anyDeviceRunning();

  EXPECT_TRUE(before);
  EXPECT_FALSE(after);
}

}  // namespace
}  // namespace halvo
