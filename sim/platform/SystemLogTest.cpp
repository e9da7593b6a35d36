#include "platform/SystemLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/support/MachinePaths.h"

namespace halvo::sim {
namespace {

using testing::EndsWith;
using testing::MatchesRegex;

class SystemLogTest : public testing::Test {
 protected:
  SystemLogTest() { machinePaths().systemLog = directory.path() / "system.log"; }
  // The log shows its lines on standard error as well, which is not looked at here.
  void TearDown() override { machinePaths().systemLog = "/dev/null"; }

  std::string log() const { return directory.read("system.log"); }

  TemporaryDirectory directory;
};

TEST_F(SystemLogTest, EntryNamesTimeProgramAndProcess) {
  halvoSystemLog("halvo-helper: up");

  EXPECT_THAT(log(), MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} "
                                  "halvo_sim_platform_test\\[" +
                                  std::to_string(::getpid()) + "\\]: halvo-helper: up\n"));
}

TEST_F(SystemLogTest, EntriesAreAppended) {
  directory.write("system.log", "earlier\n");
  halvoSystemLog("first");
  halvoSystemLog("second");

  EXPECT_THAT(log(), MatchesRegex("earlier\n[^\n]*: first\n[^\n]*: second\n"));
}

TEST_F(SystemLogTest, LineFeedCannotForgeAnEntry) {
  halvoSystemLog("refused /a\n2026-11-21 04:00:00 halvo-helper[1]: forged");

  EXPECT_THAT(log(), MatchesRegex("[^\n]*: refused /a\\\\0122026-11-21 04:00:00 halvo-helper\\[1\\]: forged\n"));
}

TEST_F(SystemLogTest, ControlCharactersAreShownAsCodes) {
  halvoSystemLog(std::string_view("a\0b\x1B[2Jc\x7F\td", 11));

  EXPECT_THAT(log(), EndsWith(": a\\000b\\033[2Jc\\177\\011d\n"));
}

TEST_F(SystemLogTest, EmptyMessageIsDropped) {
  halvoSystemLog("");

  EXPECT_EQ(log(), "");
}

TEST_F(SystemLogTest, LogThatWasMovedAwayBeginsAnew) {
  halvoSystemLog("first");
  std::filesystem::rename(directory.path() / "system.log", directory.path() / "system.log.0");
  halvoSystemLog("second");

  EXPECT_THAT(log(), MatchesRegex("[^\n]*: second\n"));
}

TEST_F(SystemLogTest, LogThatCannotBeWrittenIsNoFailure) {
  machinePaths().systemLog = directory.path() / "no such folder" / "system.log";
  testing::internal::CaptureStderr();
  halvoSystemLog("shown all the same");

  EXPECT_THAT(testing::internal::GetCapturedStderr(), EndsWith(": shown all the same\n"));
}

TEST_F(SystemLogTest, StandardErrorThatNobodyReadsIsNoFailure) {
  int ends[2] = {-1, -1};
  ASSERT_EQ(::pipe(ends), 0);
  const int kept = ::dup(STDERR_FILENO);
  ::dup2(ends[1], STDERR_FILENO);
  ::close(ends[0]);
  ::close(ends[1]);
  halvoSystemLog("still alive");
  ::dup2(kept, STDERR_FILENO);
  ::close(kept);

  EXPECT_THAT(log(), EndsWith(": still alive\n"));
}

}  // namespace
}  // namespace halvo::sim
