#include <dispatch/dispatch.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/frameworks/dispatch/MainQueue.h"
#include "sim/support/MachinePaths.h"
#include "sim/support/SimClock.h"

namespace halvo::sim {
namespace {

constexpr std::int64_t kMillisecond = NSEC_PER_MSEC;

void print(const std::string& text) { static_cast<void>(std::fputs(text.c_str(), stderr)); }
void printContext(void* context) { print(static_cast<const char*>(context)); }
void leave(void*) { std::exit(0); }
void* text(const char* literal) { return const_cast<char*>(literal); }

void addAt(dispatch_time_t when, void* context, dispatch_function_t work) {
  dispatch_after_f(when, dispatch_get_main_queue(), context, work);
}
void addNow(void* context, dispatch_function_t work) { addAt(DISPATCH_TIME_NOW, context, work); }
void add(const char* literal) { addNow(text(literal), printContext); }
void addAfter(std::int64_t milliseconds, void* context, dispatch_function_t work) {
  addAt(dispatch_time(DISPATCH_TIME_NOW, milliseconds * kMillisecond), context, work);
}

dispatch_source_t makeTimer(std::int64_t milliseconds, void* context, dispatch_function_t handler) {
  dispatch_source_t timer = dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, dispatch_get_main_queue());
  dispatch_source_set_timer(timer, dispatch_time(DISPATCH_TIME_NOW, milliseconds * kMillisecond),
                            static_cast<std::uint64_t>(milliseconds * kMillisecond), 0);
  dispatch_set_context(timer, context);
  dispatch_source_set_event_handler_f(timer, handler);
  return timer;
}

std::string outputOf(const char* program) {
  FILE* output = ::popen(program, "r");
  std::string text(100, '\0');
  text.resize(std::fread(text.data(), 1, text.size(), output));
  ::pclose(output);
  return text;
}

// Each main queue runs in a process of its own, which its last item ends through exit(), static destruction included.
class MainQueueTest : public testing::Test {
 protected:
  MainQueueTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

#define EXPECT_QUEUE(setUp, output) \
  EXPECT_EXIT(                      \
      {                             \
        setUp();                    \
        dispatch_main();            \
      },                            \
      testing::ExitedWithCode(0), output)

TEST_F(MainQueueTest, ItemsRunInTheOrderInWhichTheyWereAdded) {
  const auto setUp = [] {
    add("one ");
    add("two ");
    add("three");
    addNow(nullptr, leave);
  };

  EXPECT_QUEUE(setUp, "^one two three$");
}

TEST_F(MainQueueTest, AnItemIsFinishedBeforeTheNextBegins) {
  const auto setUp = [] {
    const auto nested = [](void*) {
      add("inner");
      addNow(nullptr, leave);
      print("outer-done ");
    };
    addNow(nullptr, nested);
  };

  EXPECT_QUEUE(setUp, "^outer-done inner$");
}

TEST_F(MainQueueTest, TheMainThreadEndsWithItsLocalsAndItemsRunOnWorkers) {
  EXPECT_EQ(outputOf(HALVO_MAIN_QUEUE_PROBE), "destroyed worker");
}

TEST_F(MainQueueTest, AnotherThreadWakesAQueueThatWaits) {
  const auto setUp = [] {
    // Runs once the queue has had nothing to do for a while.
    std::thread([] {
      ::usleep(20'000);
      addNow(nullptr, leave);
    }).detach();
  };

  EXPECT_QUEUE(setUp, "^$");
}

TEST_F(MainQueueTest, DelayedItemsRunInTheOrderOfTheirTimes) {
  const auto setUp = [] {
    const dispatch_time_t begin = dispatch_time(DISPATCH_TIME_NOW, 0);
    addAt(dispatch_time(begin, 90 * kMillisecond), nullptr, leave);
    addAt(dispatch_time(begin, 70 * kMillisecond), text("second "), printContext);
    addAt(dispatch_time(begin, 50 * kMillisecond), text("first "), printContext);
    addAt(dispatch_time(begin, -5 * kMillisecond), text("past "), printContext);
    add("now ");
    dispatch_after_f(DISPATCH_TIME_FOREVER, dispatch_get_main_queue(), text("never"), printContext);
  };

  EXPECT_QUEUE(setUp, "^past now first second $");
}

TEST_F(MainQueueTest, ATimerRepeats) {
  const auto setUp = [] {
    static int runs = 0;
    const auto count = [](void*) {
      if (++runs == 3) std::exit(0);
    };
    dispatch_activate(makeTimer(5, nullptr, count));
  };

  EXPECT_QUEUE(setUp, "");
}

TEST_F(MainQueueTest, ATimerThatWasNeverActivatedDoesNotRun) {
  const auto setUp = [] {
    static const dispatch_source_t kept = makeTimer(1, text("ran"), printContext);
    if (kept == nullptr) std::_Exit(2);
    addAfter(20, nullptr, leave);
  };

  EXPECT_QUEUE(setUp, "^$");
}

TEST_F(MainQueueTest, TheHandlerGetsTheContextThatWasSetBeforeIt) {
  const auto setUp = [] {
    const auto printAndLeave = [](void* context) {
      printContext(context);
      std::exit(0);
    };
    dispatch_source_t timer = makeTimer(5, text("before"), printAndLeave);
    dispatch_set_context(timer, text("after"));
    dispatch_activate(timer);
  };

  EXPECT_QUEUE(setUp, "^before$");
}

TEST_F(MainQueueTest, PeriodsMissedDuringASlowHandlerMerge) {
  const auto setUp = [] {
    static const dispatch_time_t begin = uptimeNanoseconds();
    static int runs = 0;
    const auto slowAtFirst = [](void*) {
      if (++runs == 1) ::usleep(50'000);
      // The second run makes up for the periods at 40 and 60 ms; the third comes with the period at 80 ms.
      if (runs == 3) std::exit(uptimeNanoseconds() - begin >= 80 * NSEC_PER_MSEC ? 0 : 1);
    };
    dispatch_source_t timer = makeTimer(20, nullptr, slowAtFirst);
    dispatch_source_set_timer(timer, begin + 20 * NSEC_PER_MSEC, 20 * NSEC_PER_MSEC, 0);
    dispatch_activate(timer);
  };

  EXPECT_QUEUE(setUp, "");
}

TEST_F(MainQueueTest, AFastClockShortensTheWait) {
  const auto setUp = [] {
    const TemporaryDirectory state;
    state.write("clock-rate", "1000");
    setStateRoot(state.path());
    if (clockRate() != 1000) std::_Exit(2);
    addAfter(20'000, nullptr, leave);
  };
  const auto begin = std::chrono::steady_clock::now();

  EXPECT_QUEUE(setUp, "");

  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

TEST_F(MainQueueTest, MisuseEndsTheProcess) {
  const auto runOnAnotherThread = [] { std::thread([] { dispatch_main(); }).join(); };
  const auto runTwice = [] {
    addNow(nullptr, [](void*) { dispatch_main(); });
    dispatch_main();
  };

  EXPECT_DEATH(runOnAnotherThread(), "another thread");
  EXPECT_DEATH(runTwice(), "another thread");
}

TEST(DispatchTimeTest, MovesFromTheGivenMomentAndStaysInRange) {
  EXPECT_EQ(dispatch_time(1000, 5), 1005U);
  EXPECT_EQ(dispatch_time(1000, -5), 995U);
  EXPECT_EQ(dispatch_time(1000, -5000), 1U);
  EXPECT_EQ(dispatch_time(1000, INT64_MIN), 1U);
  EXPECT_EQ(dispatch_time(DISPATCH_TIME_FOREVER - 5, 100), DISPATCH_TIME_FOREVER);
  EXPECT_EQ(dispatch_time(DISPATCH_TIME_FOREVER, -100), DISPATCH_TIME_FOREVER);
}

TEST(DispatchTimeTest, NowIsTheUptime) {
  const dispatch_time_t before = uptimeNanoseconds();

  const dispatch_time_t now = dispatch_time(DISPATCH_TIME_NOW, 0);

  EXPECT_GE(now, before);
  EXPECT_LE(now, uptimeNanoseconds());
}

struct GridRow {
  const char* name;
  dispatch_time_t due;
  std::uint64_t interval;
  dispatch_time_t now;
  dispatch_time_t next;
};

class TimerGrid : public testing::TestWithParam<GridRow> {};

TEST_P(TimerGrid, GivesTheFirstPointAfterNow) {
  const auto& [name, due, interval, now, next] = GetParam();

  EXPECT_EQ(nextGridPoint(due, interval, now), next);
}

INSTANTIATE_TEST_SUITE_P(Table, TimerGrid,
                         testing::Values(GridRow{"OnTime", 100, 15, 100, 115},
                                         GridRow{"ALittleLate", 100, 15, 114, 115},
                                         GridRow{"APeriodLate", 100, 15, 115, 130},
                                         GridRow{"ManyPeriodsLate", 100, 15, 1000, 1015},
                                         GridRow{"OneShot", 100, DISPATCH_TIME_FOREVER, 100, DISPATCH_TIME_FOREVER},
                                         GridRow{"Never", DISPATCH_TIME_FOREVER, 15, 100, DISPATCH_TIME_FOREVER},
                                         GridRow{"BeyondTheClock", DISPATCH_TIME_FOREVER - 5, 15,
                                                 DISPATCH_TIME_FOREVER - 3, DISPATCH_TIME_FOREVER}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace halvo::sim
