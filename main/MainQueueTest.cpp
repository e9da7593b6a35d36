#include "main/MainQueue.h"

#include <dispatch/dispatch.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace halvo {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// Each main queue runs in a process of its own, which its last work ends.
class HelperMainQueue : public testing::Test {
 protected:
  HelperMainQueue() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

void print(const std::string& text) { static_cast<void>(std::fputs(text.c_str(), stderr)); }

// Work that the system's own call puts on the main queue.
void bySystemAfter(milliseconds delay, void (*work)(void*)) {
  dispatch_after_f(dispatch_time(DISPATCH_TIME_NOW, delay.count() * static_cast<std::int64_t>(NSEC_PER_MSEC)),
                   dispatch_get_main_queue(), nullptr, work);
}

TEST_F(HelperMainQueue, RunsWorkOnceWhenItsDelayHasPassed) {
  const auto run = [] {
    bySystemAfter(milliseconds(20), [](void*) { print("before "); });
    halvoRunOnMainQueueAfter(milliseconds(50), [] { print("work "); });
    bySystemAfter(milliseconds(100), [](void*) { print("after"); });
    bySystemAfter(milliseconds(200), [](void*) { std::_Exit(0); });
    dispatch_main();
  };

  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "^before work after$");
}

TEST_F(HelperMainQueue, ReleasesWorkThatHasRun) {
  const auto run = [] {
    static std::weak_ptr<int> watched;
    auto kept = std::make_shared<int>();
    watched = kept;
    halvoRunOnMainQueueAfter(milliseconds(1), [kept = std::move(kept)] { print(kept ? "kept " : "lost "); });
    halvoRunOnMainQueueAfter(milliseconds(20), [] { print(watched.expired() ? "released" : "leaked"); });
    bySystemAfter(milliseconds(50), [](void*) { std::_Exit(0); });
    dispatch_main();
  };

  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "^kept released$");
}

TEST_F(HelperMainQueue, RepeatsWorkButNeverBeforeItsIntervalHasPassed) {
  const auto run = [] {
    static const auto begin = steady_clock::now();
    static int runs = 0;
    halvoRunOnMainQueueEvery(milliseconds(30), [] {
      ++runs;
      if (steady_clock::now() - begin < runs * milliseconds(30)) std::_Exit(1);
      if (runs == 3) std::_Exit(0);
    });
    bySystemAfter(std::chrono::seconds(20), [](void*) { std::_Exit(2); });
    dispatch_main();
  };

  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST(HelperEnd, IsASuccessWhateverElseRuns) { EXPECT_EXIT(halvoEndProcess(), testing::ExitedWithCode(0), "^$"); }

// A connection's thread may be using what a destructor would take away.
TEST(HelperEnd, TearsNothingDownUnderThreadsThatStillRun) {
  const auto end = [] {
    std::atexit([] { print("torn down"); });
    halvoEndProcess();
  };

  EXPECT_EXIT(end(), testing::ExitedWithCode(0), "^$");
}

}  // namespace
}  // namespace halvo
