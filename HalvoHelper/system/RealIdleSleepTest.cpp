#include "HalvoHelper/system/RealIdleSleep.h"

#include <IOKit/pwr_mgt/IOPMLib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sim/frameworks/testing/FrameworkProbe.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kCreated =
    "IOPMAssertionCreateWithName type=PreventUserIdleSystemSleep level=255 name=\"changing the Halvo audio product\"";

class RealIdleSleepTest : public testing::Test {
 protected:
  std::vector<std::string> log_;
  sim::FrameworkProbe probe_;
  RealIdleSleep sleep_{[this](const std::string& line) { log_.push_back(line); }};
};

TEST_F(RealIdleSleepTest, IsPreventedByAnAssertionThatIsSwitchedOnAndSaysWhatFor) {
  EXPECT_TRUE(sleep_.prevent().has_value());

  EXPECT_THAT(probe_.calls(), ElementsAre(kCreated));
  EXPECT_THAT(log_, IsEmpty());
}

TEST_F(RealIdleSleepTest, IsAllowedAgainByReleasingThatVeryAssertion) {
  const auto hold = sleep_.prevent();

  sleep_.allow(hold.value());

  EXPECT_EQ(IOPMAssertionRelease(hold.value()), kIOReturnNotFound);
}

TEST_F(RealIdleSleepTest, ARefusalIsLoggedWithItsStatus) {
  probe_.failNext("IOPMAssertionCreateWithName", kIOReturnBadArgument);

  EXPECT_EQ(sleep_.prevent(), std::nullopt);

  EXPECT_THAT(log_, ElementsAre("halvo-helper: idle sleep not prevented status=-536870206"));
}

TEST_F(RealIdleSleepTest, EndsWithItsScope) {
  { const IdleSleepPrevention prevention(sleep_); }

  EXPECT_THAT(probe_.calls(), ElementsAre(kCreated, "IOPMAssertionRelease"));
}

TEST_F(RealIdleSleepTest, NothingIsReleasedThatWasNotGiven) {
  probe_.failNext("IOPMAssertionCreateWithName", kIOReturnBadArgument);

  { const IdleSleepPrevention prevention(sleep_); }

  EXPECT_THAT(probe_.calls(), ElementsAre(kCreated));
}

}  // namespace
}  // namespace halvo
