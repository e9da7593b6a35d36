#include "sim/tools/ToolRun.h"

#include <gmock/gmock.h>
#include <sys/time.h>

#include <csignal>
#include <sstream>
#include <stdexcept>

#include "sim/support/StateRoot.h"
#include "sim/support/TemporaryDirectory.h"

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

TEST_F(ToolRunTest, AFaultOfAnotherToolChangesNothing) {
  directory_.write("faults/other", "9");

  EXPECT_EQ(run(), 5);
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

}  // namespace
}  // namespace halvo::sim
