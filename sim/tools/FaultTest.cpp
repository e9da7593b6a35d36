#include "sim/tools/Fault.h"

#include <gtest/gtest.h>
#include <sys/time.h>

#include <csignal>
#include <stdexcept>

#include "sim/support/StateRoot.h"
#include "sim/support/TemporaryDirectory.h"

namespace halvo::sim {
namespace {

constexpr int kSoon = 20'000;  // microseconds

struct FaultRow {
  const char* name;
  const char* text;
  std::optional<Fault> fault;
};

class ScriptedFault : public testing::TestWithParam<FaultRow> {};

TEST_P(ScriptedFault, IsWhatTheFileSays) {
  const TemporaryDirectory directory;
  setStateRoot(directory.path());
  directory.write("faults/installer", GetParam().text);

  EXPECT_EQ(scriptedFault("installer"), GetParam().fault);
}

INSTANTIATE_TEST_SUITE_P(Table, ScriptedFault,
                         testing::Values(FaultRow{"AStatus", "3\n", Fault{.kind = Fault::Kind::exit, .status = 3}},
                                         FaultRow{"Success", "0", Fault{.kind = Fault::Kind::exit, .status = 0}},
                                         FaultRow{"TheLargestStatus", "255",
                                                  Fault{.kind = Fault::Kind::exit, .status = 255}},
                                         FaultRow{"AStatusAfterActing", "7 after\n",
                                                  Fault{.kind = Fault::Kind::exitAfterActing, .status = 7}},
                                         FaultRow{"AHang", "hang\n", Fault{.kind = Fault::Kind::hang}},
                                         FaultRow{"NothingInAnEmptyFile", "", std::nullopt},
                                         FaultRow{"NothingInABlankFile", " \n", std::nullopt}),
                         [](const auto& row) { return row.param.name; });

class MisspeltFault : public testing::TestWithParam<FaultRow> {};

TEST_P(MisspeltFault, IsAnError) {
  const TemporaryDirectory directory;
  setStateRoot(directory.path());
  directory.write("faults/installer", GetParam().text);

  EXPECT_THROW(scriptedFault("installer"), std::runtime_error);
}

INSTANTIATE_TEST_SUITE_P(Table, MisspeltFault,
                         testing::Values(FaultRow{"AnotherWord", "fail", {}},
                                         FaultRow{"AnotherSecondWord", "1 before", {}},
                                         FaultRow{"AThirdWord", "1 after all", {}}, FaultRow{"Negative", "-1", {}},
                                         FaultRow{"TooLarge", "256", {}}, FaultRow{"NumberAndLetters", "1x", {}},
                                         FaultRow{"AHangAfterActing", "hang after", {}}),
                         [](const auto& row) { return row.param.name; });

TEST(FaultTest, AToolWithoutAFileHasNone) {
  const TemporaryDirectory directory;
  setStateRoot(directory.path());

  EXPECT_EQ(scriptedFault("installer"), std::nullopt);
}

void hangUntilTheAlarm() {
  const itimerval alarm{.it_interval = {}, .it_value = {.tv_sec = 0, .tv_usec = kSoon}};
  ::setitimer(ITIMER_REAL, &alarm, nullptr);
  hangUntilKilled();
}

TEST(FaultTest, AHangLastsUntilASignal) { EXPECT_EXIT(hangUntilTheAlarm(), testing::KilledBySignal(SIGALRM), ""); }

}  // namespace
}  // namespace halvo::sim
