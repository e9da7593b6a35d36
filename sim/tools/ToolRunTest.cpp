#include "sim/tools/ToolRun.h"

#include <gmock/gmock.h>
#include <sys/time.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/support/MachinePaths.h"
#include "sim/support/SimClock.h"

namespace halvo::sim {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

constexpr int kSoon = 20'000;  // microseconds

class ToolRunTest : public testing::Test {
 protected:
  ToolRunTest() { setStateRoot(directory_.path()); }

  // A tool that always answers 5.
  int run() {
    return runTool("/usr/bin/tool", {"argument"}, {.out = out_, .err = err_}, [this] {
      ++acts_;
      return 5;
    });
  }
  std::string recorded() const { return directory_.read("calls.jsonl"); }

  void runUntilTheAlarm() {
    const itimerval alarm{.it_interval = {}, .it_value = {.tv_sec = 0, .tv_usec = kSoon}};
    ::setitimer(ITIMER_REAL, &alarm, nullptr);
    run();
  }

  TemporaryDirectory directory_;
  std::ostringstream out_;
  std::ostringstream err_;
  int acts_ = 0;
};

TEST_F(ToolRunTest, AnswersAndRecordsTheToolsStatus) {
  EXPECT_EQ(run(), 5);

  EXPECT_EQ(acts_, 1);
  EXPECT_THAT(recorded(), EndsWith(R"("tool":"/usr/bin/tool","arguments":["argument"],"status":5})"
                                   "\n"));
}

TEST_F(ToolRunTest, RecordsWhenTheToolBeganAndEnded) {
  const std::int64_t before = uptimeMicroseconds();

  runTool("/usr/bin/tool", {}, {.out = out_, .err = err_}, [] { return ::usleep(kSoon); });

  const auto call = nlohmann::json::parse(recorded());
  EXPECT_GE(call.at("began"), before);
  EXPECT_GE(call.at("ended"), call.at("began").get<std::int64_t>() + kSoon);
  EXPECT_LE(call.at("ended"), uptimeMicroseconds());
}

TEST_F(ToolRunTest, AFaultAnswersInsteadOfTheTool) {
  directory_.write("faults/tool", "9");

  EXPECT_EQ(run(), 9);

  EXPECT_EQ(acts_, 0);
  EXPECT_THAT(recorded(), HasSubstr(R"("status":9)"));
}

TEST_F(ToolRunTest, AFaultAfterActingLetsTheToolAct) {
  directory_.write("faults/tool", "9 after");

  EXPECT_EQ(run(), 9);

  EXPECT_EQ(acts_, 1);
}

TEST_F(ToolRunTest, ARunThatHangsIsRecordedWhenItBegins) {
  directory_.write("faults/tool", "hang");

  EXPECT_EXIT(runUntilTheAlarm(), testing::KilledBySignal(SIGALRM), "");

  EXPECT_THAT(recorded(), HasSubstr(R"("status":-1)"));
}

TEST_F(ToolRunTest, AMisspeltFaultIsReportedAndTheToolDoesNotAct) {
  directory_.write("faults/tool", "sometimes");

  EXPECT_EQ(run(), 70);

  EXPECT_EQ(acts_, 0);
  EXPECT_THAT(err_.str(), HasSubstr("faults/tool: \"sometimes\" is none of: STATUS [after] [on WORD] [call N]"));
}

TEST_F(ToolRunTest, AToolThatThrowsIsReportedAndRecorded) {
  const int status = runTool("/usr/bin/tool", {}, {.out = out_, .err = err_},
                             []() -> int { throw std::runtime_error("out of paper"); });

  EXPECT_EQ(status, 70);
  EXPECT_EQ(err_.str(), "out of paper\n");
  EXPECT_THAT(recorded(), HasSubstr(R"("status":70)"));
}

TEST_F(ToolRunTest, AnArgumentThatIsNotUtf8IsRecordedWithReplacements) {
  runTool("/usr/bin/tool", {"a\xFF"}, {.out = out_, .err = err_}, [] { return 0; });

  EXPECT_THAT(recorded(), HasSubstr("a\xEF\xBF\xBD"));
}

TEST_F(ToolRunTest, EveryUserMayAddToTheRecord) {
  run();

  const auto mode = std::filesystem::status(directory_.path() / "calls.jsonl").permissions();
  EXPECT_EQ(static_cast<unsigned>(mode), 0666U);
}

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
  directory.write("calls.jsonl", R"({"tool":"/bin/launchctl","arguments":["bootout","system/a"]})"
                                 "\n"
                                 R"({"tool":"/usr/bin/killall","arguments":["bootout"]})"
                                 "\n"
                                 R"({"tool":"/bin/launchctl","arguments":["print","gui/501"]})"
                                 "\n");
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

}  // namespace
}  // namespace halvo::sim
