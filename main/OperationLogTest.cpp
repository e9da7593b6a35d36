#include "main/OperationLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <thread>
#include <vector>

#include "HalvoHelper/testing/FifoEnds.h"
#include "HalvoHelper/testing/FileState.h"
#include "HalvoHelper/testing/RecordedSystemLog.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

using std::chrono::milliseconds;
using std::chrono::system_clock;
using testing::Each;
using testing::ElementsAre;
using testing::MatchesRegex;
using testing::SizeIs;

system_clock::time_point at(std::int64_t unixMilliseconds) {
  return system_clock::time_point(milliseconds(unixMilliseconds));
}

struct DateRow {
  const char* name;
  std::int64_t unixMilliseconds;
  const char* expected;
};

class LogDate : public testing::TestWithParam<DateRow> {};

TEST_P(LogDate, IsUniversalTimeInWholeSeconds) {
  EXPECT_EQ(halvoLogDate(at(GetParam().unixMilliseconds)), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Table, LogDate,
                         testing::Values(DateRow{"Ordinary", 1770802212000, "2026-02-11 09:30:12 +0000"},
                                         DateRow{"FractionIsCut", 1770802212999, "2026-02-11 09:30:12 +0000"},
                                         DateRow{"BeginningOfTime", 0, "1970-01-01 00:00:00 +0000"},
                                         DateRow{"JustBeforeTheBeginning", -1, "1969-12-31 23:59:59 +0000"},
                                         DateRow{"LeapDay", 1709164800000, "2024-02-29 00:00:00 +0000"},
                                         DateRow{"Afternoon", 1798761599000, "2026-12-31 23:59:59 +0000"},
                                         DateRow{"BeyondThirtyTwoBits", 4102444800000, "2100-01-01 00:00:00 +0000"}),
                         [](const auto& row) { return row.param.name; });

class OperationLogTest : public testing::Test {
 protected:
  OperationLog logAt(const std::string& path) const {
    return OperationLog(path, [] { return at(1770802212345); });
  }

  RecordedSystemLog systemLog_;
  TemporaryDirectory directory_;
  std::string path_ = directory_.path("install.log");
};

TEST_F(OperationLogTest, CreatesTheFileWithTheFirstLine) {
  logAt(path_).write("package trusted");

  EXPECT_EQ(contentsOf(path_), "2026-02-11 09:30:12 +0000: package trusted\n");
}

TEST_F(OperationLogTest, AppendsToWhatIsThere) {
  directory_.makeFile("install.log", "earlier without a line feed");

  logAt(path_).write("one");
  logAt(path_).write("two");

  EXPECT_EQ(contentsOf(path_),
            "earlier without a line feed2026-02-11 09:30:12 +0000: one\n2026-02-11 09:30:12 +0000: two\n");
}

TEST_F(OperationLogTest, StartsAnewAfterTheFileWasDeleted) {
  const OperationLog log = logAt(path_);
  log.write("one");
  std::filesystem::remove(path_);

  log.write("two");

  EXPECT_EQ(contentsOf(path_), "2026-02-11 09:30:12 +0000: two\n");
}

TEST_F(OperationLogTest, ReadsTheClockForEachLine) {
  std::int64_t now = 0;
  const OperationLog log(path_, [&now] { return at(now += 1000); });

  log.write("a");
  log.write("b");

  EXPECT_EQ(contentsOf(path_), "1970-01-01 00:00:01 +0000: a\n1970-01-01 00:00:02 +0000: b\n");
}

TEST_F(OperationLogTest, EchoesEachMessageToTheSystemLogWithoutTheDate) {
  logAt(path_).write("package trusted");

  EXPECT_THAT(systemLog_.lines(), ElementsAre("halvo-helper: package trusted"));
}

TEST_F(OperationLogTest, WritesAMessageAsItIs) {
  const std::string odd("%s %n\n\xF0\x9F\x94\x8A\xFF\0x\r\x1b[31m", 20);

  logAt(path_).write(odd);

  EXPECT_EQ(contentsOf(path_), "2026-02-11 09:30:12 +0000: " + odd + "\n");
  EXPECT_THAT(systemLog_.lines(), ElementsAre("halvo-helper: " + odd));
}

TEST_F(OperationLogTest, WritesALineForAnEmptyMessage) {
  logAt(path_).write("");

  EXPECT_EQ(contentsOf(path_), "2026-02-11 09:30:12 +0000: \n");
}

TEST_F(OperationLogTest, FollowsALinkToAFile) {
  directory_.makeFile("elsewhere.log", "x\n");
  directory_.makeLink("install.log", directory_.path("elsewhere.log"));

  logAt(path_).write("y");

  EXPECT_EQ(contentsOf(directory_.path("elsewhere.log")), "x\n2026-02-11 09:30:12 +0000: y\n");
}

TEST_F(OperationLogTest, ReplacesALinkThatDanglesAndWritesNothingThroughIt) {
  directory_.makeLink("install.log", directory_.path("elsewhere.log"));

  logAt(path_).write("one");
  logAt(path_).write("two");

  EXPECT_FALSE(isNamed(directory_.path("elsewhere.log")));
  EXPECT_FALSE(std::filesystem::is_symlink(path_));
  EXPECT_EQ(contentsOf(path_), "2026-02-11 09:30:12 +0000: one\n2026-02-11 09:30:12 +0000: two\n");
}

TEST_F(OperationLogTest, ReplacesALinkThatLeadsToItself) {
  directory_.makeLink("install.log", "install.log");

  logAt(path_).write("y");

  EXPECT_EQ(contentsOf(path_), "2026-02-11 09:30:12 +0000: y\n");
}

TEST_F(OperationLogTest, LeavesNothingElseBehindWhenItReplacesALink) {
  directory_.makeLink("install.log", directory_.path("elsewhere.log"));
  directory_.makeFile("install.log.new", "of a helper that was killed half way");

  logAt(path_).write("y");

  EXPECT_FALSE(isNamed(directory_.path("install.log.new")));
  EXPECT_EQ(contentsOf(path_), "2026-02-11 09:30:12 +0000: y\n");
}

TEST_F(OperationLogTest, LeavesALinkWhoseReplacementCannotBeMade) {
  directory_.makeLink("install.log", directory_.path("elsewhere.log"));
  directory_.makeFile("install.log.new/in the way");

  logAt(path_).write("y");

  EXPECT_TRUE(std::filesystem::is_symlink(path_));
  EXPECT_FALSE(isNamed(directory_.path("elsewhere.log")));
  EXPECT_THAT(systemLog_.lines(), ElementsAre("halvo-helper: y"));
}

TEST_F(OperationLogTest, IgnoresADirectoryInPlaceOfTheFile) {
  directory_.makeDirectory("install.log");

  logAt(path_).write("y");

  EXPECT_TRUE(std::filesystem::is_empty(path_));
  EXPECT_THAT(systemLog_.lines(), ElementsAre("halvo-helper: y"));
}

TEST_F(OperationLogTest, DoesNotWaitForAReaderOfAFifo) {
  directory_.makeFifo("install.log");

  logAt(path_).write("y");

  EXPECT_TRUE(std::filesystem::is_fifo(path_));
  EXPECT_THAT(systemLog_.lines(), ElementsAre("halvo-helper: y"));
}

TEST_F(OperationLogTest, WritesNothingIntoAFifoThatHasAReader) {
  FifoReader reader(directory_.makeFifo("install.log"));

  logAt(path_).write("y");

  EXPECT_EQ(reader.finish(), "");
}

TEST_F(OperationLogTest, IgnoresAMissingFolder) {
  logAt(directory_.path("gone/install.log")).write("y");

  EXPECT_FALSE(isNamed(directory_.path("gone")));
  EXPECT_THAT(systemLog_.lines(), ElementsAre("halvo-helper: y"));
}

struct ModeRow {
  const char* name;
  mode_t umask;
  unsigned permissions;
};

class LogFileMode : public OperationLogTest, public testing::WithParamInterface<ModeRow> {};

TEST_P(LogFileMode, IsWhatTheUmaskLeavesOfReadingAndWritingForAll) {
  const ScopedUmask umask(GetParam().umask);
  const std::string replaced = directory_.makeLink("replaced.log", directory_.path("elsewhere.log"));

  logAt(path_).write("y");
  logAt(replaced).write("y");

  EXPECT_EQ(permissionsOf(path_), GetParam().permissions);
  EXPECT_EQ(permissionsOf(replaced), GetParam().permissions);
}

INSTANTIATE_TEST_SUITE_P(Table, LogFileMode,
                         testing::Values(ModeRow{"OfADaemon", 022, 0644}, ModeRow{"None", 0, 0666},
                                         ModeRow{"OfACarefulRoot", 077, 0600}),
                         [](const auto& row) { return row.param.name; });

void writeMany(const OperationLog& log, char letter) {
  for (int line = 0; line < 200; ++line) log.write(std::string(500, letter));
}

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

TEST_F(OperationLogTest, KeepsLinesOfConcurrentOperationsWhole) {
  const OperationLog log = logAt(path_);
  std::thread a([&] { writeMany(log, 'a'); });
  std::thread b([&] { writeMany(log, 'b'); });
  std::thread c([&] { writeMany(logAt(path_), 'c'); });
  a.join();
  b.join();
  c.join();

  const auto lines = linesOf(contentsOf(path_));

  EXPECT_THAT(lines, SizeIs(600));
  EXPECT_THAT(lines, Each(MatchesRegex("2026-02-11 09:30:12 \\+0000: (a+|b+|c+)")));
  EXPECT_THAT(lines, Each(SizeIs(527)));
}

}  // namespace
}  // namespace halvo
