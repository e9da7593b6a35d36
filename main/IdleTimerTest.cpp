#include "main/IdleTimer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

#include "HalvoHelper/testing/FakeClock.h"
#include "HalvoHelper/testing/RecordedSystemLog.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// An armed timer whose clock and checks belong to the test.
class IdleTimerTest : public testing::Test {
 protected:
  IdleTimerTest() {
    halvoArmIdleTimer(
        tracker_,
        [this](std::chrono::nanoseconds interval, std::function<void()> work) {
          interval_ = interval;
          check_ = std::move(work);
        },
        [this] { ++exits_; });
  }

  void checkAfter(double seconds) {
    clock_.advance(seconds);
    check_();
  }

  RecordedSystemLog systemLog_;
  FakeClock clock_;
  std::shared_ptr<ActivityTracker> tracker_ = std::make_shared<ActivityTracker>(clock_.reader());
  std::chrono::nanoseconds interval_{};
  std::function<void()> check_;
  int exits_ = 0;
};

TEST_F(IdleTimerTest, LooksEveryFifteenSeconds) { EXPECT_EQ(interval_, std::chrono::seconds(15)); }

TEST_F(IdleTimerTest, DoesNothingBeforeItsFirstLook) {
  clock_.advance(3600);

  EXPECT_EQ(exits_, 0);
}

TEST_F(IdleTimerTest, StaysWhileLessThanAMinuteHasPassed) {
  checkAfter(59.999);

  EXPECT_EQ(exits_, 0);
  EXPECT_THAT(systemLog_.lines(), IsEmpty());
}

TEST_F(IdleTimerTest, ExitsWhenAMinuteHasPassedSinceTheStart) {
  checkAfter(60);

  EXPECT_EQ(exits_, 1);
  EXPECT_THAT(systemLog_.lines(), ElementsAre("halvo-helper: idle for 60 s, exiting (launchd restarts on demand)"));
}

TEST_F(IdleTimerTest, StaysWhileACallIsInFlight) {
  const ActivityScope install(tracker_);

  checkAfter(3600);

  EXPECT_EQ(exits_, 0);
}

TEST_F(IdleTimerTest, CountsTheMinuteFromTheEndOfTheLastCall) {
  clock_.advance(45);
  tracker_->begin();
  clock_.advance(45);
  tracker_->end();

  checkAfter(59.999);
  EXPECT_EQ(exits_, 0);
  checkAfter(0.001);
  EXPECT_EQ(exits_, 1);
}

}  // namespace
}  // namespace halvo
