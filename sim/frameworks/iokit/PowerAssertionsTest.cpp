#include <IOKit/pwr_mgt/IOPMLib.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <string>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/support/MachinePaths.h"

namespace halvo::sim {
namespace {

class PowerAssertionsTest : public testing::Test {
 protected:
  PowerAssertionsTest() { setStateRoot(state.path()); }
  ~PowerAssertionsTest() override { setStateRoot(before); }

  static IOReturn create(IOPMAssertionID& assertion) {
    return IOPMAssertionCreateWithName(kIOPMAssertPreventUserIdleSystemSleep, kIOPMAssertionLevelOn, CFSTR("work"),
                                       &assertion);
  }

  std::string shown() const {
    std::ifstream file(state.path("power-assertions"));
    return {std::istreambuf_iterator<char>(file), {}};
  }

  const std::filesystem::path before = stateRoot();
  TemporaryDirectory state;
  IOPMAssertionID first = kIOPMNullAssertionID;
  IOPMAssertionID second = kIOPMNullAssertionID;
};

TEST_F(PowerAssertionsTest, IsShownWithItsProcessUntilItIsReleased) {
  EXPECT_EQ(create(first), kIOReturnSuccess);

  EXPECT_EQ(shown(), std::to_string(::getpid()) + " PreventUserIdleSystemSleep work\n");

  EXPECT_EQ(IOPMAssertionRelease(first), kIOReturnSuccess);
  EXPECT_EQ(shown(), "");
}

TEST_F(PowerAssertionsTest, EachHasANumberOfItsOwnThatIsReleasedOnce) {
  create(first);
  create(second);

  EXPECT_NE(first, second);
  EXPECT_EQ(IOPMAssertionRelease(first), kIOReturnSuccess);
  EXPECT_EQ(IOPMAssertionRelease(first), kIOReturnNotFound);
  EXPECT_EQ(IOPMAssertionRelease(second), kIOReturnSuccess);
}

TEST_F(PowerAssertionsTest, NothingMayBeLeftOut) {
  EXPECT_EQ(IOPMAssertionCreateWithName(nullptr, kIOPMAssertionLevelOn, CFSTR("work"), &first), kIOReturnBadArgument);
  EXPECT_EQ(IOPMAssertionCreateWithName(kIOPMAssertPreventUserIdleSystemSleep, kIOPMAssertionLevelOn, nullptr, &first),
            kIOReturnBadArgument);
  EXPECT_EQ(
      IOPMAssertionCreateWithName(kIOPMAssertPreventUserIdleSystemSleep, kIOPMAssertionLevelOn, CFSTR("work"), nullptr),
      kIOReturnBadArgument);
  EXPECT_EQ(IOPMAssertionRelease(kIOPMNullAssertionID), kIOReturnBadArgument);
}

}  // namespace
}  // namespace halvo::sim
