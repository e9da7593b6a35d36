#include "sim/support/SimClock.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/support/MachinePaths.h"

namespace halvo::sim {
namespace {

using std::chrono::nanoseconds;
using std::chrono::seconds;

// The rate is read once per process, so every rate needs a process of its own.
[[noreturn]] void reportRate(const TemporaryDirectory& directory) {
  setStateRoot(directory.path());
  static_cast<void>(std::fprintf(stderr, "rate=%g minute=%lld", clockRate(),
                                 static_cast<long long>(realDuration(seconds(60)).count())));
  std::_Exit(0);
}

struct RateRow {
  const char* name;
  const char* file;
  const char* report;
};

class ClockRate : public testing::TestWithParam<RateRow> {};

TEST_P(ClockRate, ComesFromTheFile) {
  const TemporaryDirectory directory;
  directory.write("clock-rate", GetParam().file);

  EXPECT_EXIT(reportRate(directory), testing::ExitedWithCode(0), GetParam().report);
}

INSTANTIATE_TEST_SUITE_P(Table, ClockRate,
                         testing::Values(RateRow{"AFactor", "60\n", "rate=60 minute=1000000000"},
                                         RateRow{"AFraction", "0.5", "rate=0.5 minute=120000000000"},
                                         RateRow{"Text", "fast", "rate=1 minute=60000000000"},
                                         RateRow{"Nothing", "", "rate=1 minute=60000000000"},
                                         RateRow{"Zero", "0", "rate=1 minute=60000000000"},
                                         RateRow{"BelowZero", "-3", "rate=1 minute=60000000000"},
                                         RateRow{"Infinity", "inf", "rate=1 minute=60000000000"}),
                         [](const auto& row) { return row.param.name; });

TEST(SimClockTest, AMachineWithoutTheFileRunsInRealTime) {
  const TemporaryDirectory directory;

  EXPECT_EXIT(reportRate(directory), testing::ExitedWithCode(0), "rate=1 minute=60000000000");
}

TEST(SimClockTest, UptimeIsTheMonotonicClockTimesTheRate) {
  const TemporaryDirectory directory;
  directory.write("clock-rate", "1000");
  const auto elapsedRatio = [&] {
    setStateRoot(directory.path());
    timespec real{};
    ::clock_gettime(CLOCK_MONOTONIC, &real);
    const double simulated = uptimeSeconds();
    std::_Exit(static_cast<int>(simulated /
                                (static_cast<double>(real.tv_sec) + 1e-9 * static_cast<double>(real.tv_nsec)) / 10));
  };

  EXPECT_EXIT(elapsedRatio(), testing::ExitedWithCode(100), "");
}

TEST(SimClockTest, AWaitThatDoesNotFitIsTheLongest) {
  const TemporaryDirectory directory;
  directory.write("clock-rate", "0.001");
  const auto report = [&] {
    setStateRoot(directory.path());
    std::_Exit(realDuration(nanoseconds::max()) == nanoseconds::max() ? 7 : 8);
  };

  EXPECT_EXIT(report(), testing::ExitedWithCode(7), "");
}

}  // namespace
}  // namespace halvo::sim
