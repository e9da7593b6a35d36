#include <dispatch/dispatch.h>
#include <gtest/gtest.h>

#include <cstdint>

#include "sim/frameworks/dispatch/Clock.h"
#include "sim/frameworks/dispatch/Timer.h"

namespace halvo::sim {
namespace {

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
