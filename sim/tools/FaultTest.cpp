#include "sim/tools/Fault.h"

#include <gtest/gtest.h>
#include <sys/time.h>

#include <csignal>
#include <stdexcept>

#include "sim/support/StateRoot.h"
#include "sim/support/TemporaryDirectory.h"
#include "sim/tools/CallLog.h"

namespace halvo::sim {
namespace {

constexpr int kSoon = 20'000;  // microseconds

struct FaultRow {
  const char* name;
  const char* text;
  std::optional<Fault> fault;
};

// The run that is asked about is the second "bootout" and the third of all.
std::optional<Fault> faultOfThirdRun(const std::string& text) {
  const TemporaryDirectory directory;
  setStateRoot(directory.path());
  directory.write("faults/launchctl", text);
  CallLog::append("/bin/launchctl", {"bootout", "system/a"}, 0);
  CallLog::append("/usr/bin/killall", {"bootout"}, 0);
  CallLog::append("/bin/launchctl", {"print", "gui/501"}, 0);
  return scriptedFault("/bin/launchctl", {"bootout", "system/b"});
}

class ScriptedFault : public testing::TestWithParam<FaultRow> {};

TEST_P(ScriptedFault, IsWhatTheFirstLineForTheRunSays) {
  EXPECT_EQ(faultOfThirdRun(GetParam().text), GetParam().fault);
}

constexpr Fault kThree{.kind = Fault::Kind::exit, .status = 3};

INSTANTIATE_TEST_SUITE_P(
    Table, ScriptedFault,
    testing::Values(
        FaultRow{"AStatus", "3\n", kThree}, FaultRow{"Success", "0", Fault{.kind = Fault::Kind::exit, .status = 0}},
        FaultRow{"TheLargestStatus", "255", Fault{.kind = Fault::Kind::exit, .status = 255}},
        FaultRow{"AStatusAfterActing", "7 after\n", Fault{.kind = Fault::Kind::exitAfterActing, .status = 7}},
        FaultRow{"AHang", "hang\n", Fault{.kind = Fault::Kind::hang}},
        FaultRow{"OfTheVerb", "5 on print\n3 on bootout\n", kThree},
        FaultRow{"OfTheCall", "5 call 2\n3 call 3\n5 call 4\n", kThree},
        FaultRow{"OfTheVerbsCall", "5 on bootout call 1\n3 on bootout call 2\n", kThree},
        FaultRow{"NothingForAnotherVerb", "3 on print\n", std::nullopt},
        FaultRow{"NothingInAnEmptyFile", "", std::nullopt}, FaultRow{"NothingInABlankLine", " \n", std::nullopt}),
    [](const auto& row) { return row.param.name; });

class MisspeltFault : public testing::TestWithParam<FaultRow> {};

TEST_P(MisspeltFault, IsAnError) { EXPECT_THROW(faultOfThirdRun(GetParam().text), std::runtime_error); }

INSTANTIATE_TEST_SUITE_P(Table, MisspeltFault,
                         testing::Values(FaultRow{"AnotherWord", "fail", {}},
                                         FaultRow{"AnotherSecondWord", "1 before", {}},
                                         FaultRow{"AThirdWord", "1 after all", {}}, FaultRow{"Negative", "-1", {}},
                                         FaultRow{"TooLarge", "256", {}}, FaultRow{"NumberAndLetters", "1x", {}},
                                         FaultRow{"AHangAfterActing", "hang after", {}},
                                         FaultRow{"ACallThatIsNoNumber", "1 call x", {}},
                                         FaultRow{"TheZerothCall", "1 call 0", {}}),
                         [](const auto& row) { return row.param.name; });

TEST(FaultTest, AToolWithoutAFileHasNone) {
  const TemporaryDirectory directory;
  setStateRoot(directory.path());

  EXPECT_EQ(scriptedFault("/usr/sbin/installer", {}), std::nullopt);
}

void hangUntilTheAlarm() {
  const itimerval alarm{.it_interval = {}, .it_value = {.tv_sec = 0, .tv_usec = kSoon}};
  ::setitimer(ITIMER_REAL, &alarm, nullptr);
  hangUntilKilled();
}

TEST(FaultTest, AHangLastsUntilASignal) { EXPECT_EXIT(hangUntilTheAlarm(), testing::KilledBySignal(SIGALRM), ""); }

}  // namespace
}  // namespace halvo::sim
