#include "HalvoHelper/service/ActivityTracker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <future>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "HalvoHelper/testing/FakeClock.h"

namespace halvo {
namespace {

constexpr double kPeriod = 60.0;

// Begins and ends many calls and answers how often the tracker claimed to be idle in between.
int callsSeenIdle(ActivityTracker& tracker) {
  int idle = 0;
  for (int call = 0; call < 2000; ++call) {
    tracker.begin();
    if (tracker.isIdle(0.0)) ++idle;
    tracker.end();
  }
  return idle;
}

TEST(ActivityTrackerTest, IsIdleAtExactlyThePeriodAfterItsConstruction) {
  const FakeClock clock;
  const ActivityTracker tracker(clock.reader());

  clock.advance(60.0);

  EXPECT_TRUE(tracker.isIdle(kPeriod));
}

TEST(ActivityTrackerTest, IsNotIdleJustBeforeThePeriod) {
  const FakeClock clock;
  const ActivityTracker tracker(clock.reader());

  clock.advance(59.875);

  EXPECT_FALSE(tracker.isIdle(kPeriod));
}

TEST(ActivityTrackerTest, ReadsTheClockOnceWhenConstructed) {
  const auto recorder = std::make_shared<CallRecorder>();

  const ActivityTracker tracker(FakeClock(1000.0, recorder).reader());

  EXPECT_EQ(recorder->calls, std::vector<std::string>{"clock"});
}

TEST(ActivityTrackerTest, IsNeverIdleWithACallInFlight) {
  const FakeClock clock;
  ActivityTracker tracker(clock.reader());
  tracker.begin();

  clock.advance(1.0e9);

  EXPECT_FALSE(tracker.isIdle(kPeriod));
  EXPECT_FALSE(tracker.isIdle(0.0));
}

TEST(ActivityTrackerTest, CountsThePeriodFromTheEndOfACall) {
  const FakeClock clock;
  ActivityTracker tracker(clock.reader());
  tracker.begin();
  clock.advance(100.0);
  tracker.end();

  clock.advance(59.0);

  EXPECT_FALSE(tracker.isIdle(kPeriod));
}

TEST(ActivityTrackerTest, IsIdleAgainAPeriodAfterTheEndOfACall) {
  const FakeClock clock;
  ActivityTracker tracker(clock.reader());
  tracker.begin();
  clock.advance(100.0);
  tracker.end();

  clock.advance(60.0);

  EXPECT_TRUE(tracker.isIdle(kPeriod));
}

TEST(ActivityTrackerTest, IsNotIdleUntilTheLastOfTwoCallsEnds) {
  const FakeClock clock;
  ActivityTracker tracker(clock.reader());
  tracker.begin();
  tracker.begin();
  tracker.end();
  clock.advance(60.0);

  const bool idleWithOneLeft = tracker.isIdle(kPeriod);
  tracker.end();

  EXPECT_FALSE(idleWithOneLeft);
  EXPECT_TRUE(tracker.isIdle(0.0));
}

TEST(ActivityTrackerTest, DoesNotCountBelowZeroOnAStrayEnd) {
  const FakeClock clock;
  ActivityTracker tracker(clock.reader());
  tracker.end();
  tracker.end();

  tracker.begin();

  EXPECT_FALSE(tracker.isIdle(0.0));
}

TEST(ActivityTrackerTest, RestartsThePeriodOnAStrayEnd) {
  const FakeClock clock;
  ActivityTracker tracker(clock.reader());
  clock.advance(30.0);
  tracker.end();

  clock.advance(30.0);

  EXPECT_FALSE(tracker.isIdle(kPeriod));
  EXPECT_TRUE(tracker.isIdle(30.0));
}

TEST(ActivityTrackerDeathTest, TheCountEndsTheProcessRatherThanWrap) {
  EXPECT_EQ(halvoCountedUp(9223372036854775806), 9223372036854775807);
  EXPECT_EXIT(static_cast<void>(halvoCountedUp(9223372036854775807)), testing::KilledBySignal(SIGABRT), "");
}

TEST(ActivityTrackerTest, StaysAliveThroughPingsMoreOftenThanThePeriod) {
  const FakeClock clock;
  ActivityTracker tracker(clock.reader());
  clock.advance(59.0);
  tracker.begin();
  tracker.end();
  clock.advance(59.0);

  EXPECT_FALSE(tracker.isIdle(kPeriod));
}

TEST(ActivityTrackerTest, KeepsItsCountUnderManyThreads) {
  const FakeClock clock;
  ActivityTracker tracker(clock.reader());
  std::atomic<int> idleSeen = 0;
  std::vector<std::thread> threads;
  tracker.begin();

  std::generate_n(std::back_inserter(threads), 8,
                  [&] { return std::thread([&] { idleSeen += callsSeenIdle(tracker); }); });
  std::ranges::for_each(threads, &std::thread::join);

  EXPECT_EQ(idleSeen, 0);
  EXPECT_FALSE(tracker.isIdle(0.0));
  tracker.end();
  EXPECT_TRUE(tracker.isIdle(0.0));
}

// The clock is read while a call is counted: whoever looks at the count meanwhile waits.
TEST(ActivityTrackerTest, NobodyLooksWhileACallIsBeingCounted) {
  ActivityTracker* looked = nullptr;
  std::future<bool> look;
  const auto readTheClock = [&] {
    if (looked != nullptr && !look.valid()) {
      look = std::async(std::launch::async, [&] { return looked->isIdle(0.0); });
      EXPECT_EQ(look.wait_for(std::chrono::milliseconds(30)), std::future_status::timeout);
    }
    return 0.0;
  };
  ActivityTracker tracker(readTheClock);
  looked = &tracker;

  tracker.begin();

  EXPECT_FALSE(look.get());
}

TEST(ActivityScopeTest, CountsACallWhileItLives) {
  const auto tracker = std::make_shared<ActivityTracker>(FakeClock().reader());
  auto scope = std::make_unique<ActivityScope>(tracker);

  const bool idleInside = tracker->isIdle(0.0);
  scope.reset();

  EXPECT_FALSE(idleInside);
  EXPECT_TRUE(tracker->isIdle(0.0));
}

}  // namespace
}  // namespace halvo
