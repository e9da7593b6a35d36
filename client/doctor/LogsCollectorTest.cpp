#include "client/doctor/LogsCollector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

using namespace std::chrono;

constexpr system_clock::time_point kNow = sys_days(year(2026) / 2 / 12) + hours(9) + minutes(30) + seconds(12);

TEST(LastRefusalTest, ALogWithoutRefusalHasNone) {
  EXPECT_FALSE(lastRefusal("", kNow).has_value());
  EXPECT_FALSE(lastRefusal("2026-02-11 09:30:12 +0000: package trusted: X\n", kNow).has_value());
}

TEST(LastRefusalTest, HasDateAgeAndMessage) {
  const auto refusal = lastRefusal("2026-02-11 09:30:12 +0000: REFUSED untrusted package (unsigned): X\n", kNow);

  ASSERT_TRUE(refusal.has_value());
  EXPECT_EQ(refusal->date, "2026-02-11 09:30:12 +0000");
  EXPECT_EQ(refusal->age, hours(24));
  EXPECT_EQ(refusal->message, "REFUSED untrusted package (unsigned): X");
  EXPECT_FALSE(refusal->overcome);
}

struct MessageRow {
  const char* name;
  const char* message;
};

class RefusedMessage : public testing::TestWithParam<MessageRow> {};

TEST_P(RefusedMessage, IsARefusal) {
  const std::string line = std::string("2026-02-11 09:30:12 +0000: ") + GetParam().message + "\n";

  EXPECT_EQ(lastRefusal(line, kNow)->message, GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(Table, RefusedMessage,
                         testing::Values(MessageRow{"Staging", "REFUSED: could not stage /a -> /b"},
                                         MessageRow{"Downgrade", "refusing downgrade: installed=2 incoming=1"},
                                         MessageRow{"RolledBack", "installer failed; rolling back from /x"},
                                         MessageRow{"Incomplete", "uninstall incomplete; leftover: /x"}),
                         [](const auto& row) { return std::string(row.param.name); });

struct LineRow {
  const char* name;
  const char* line;
};

class LineThatIsNone : public testing::TestWithParam<LineRow> {};

TEST_P(LineThatIsNone, IsPassedOver) { EXPECT_FALSE(lastRefusal(GetParam().line, kNow).has_value()); }

INSTANTIATE_TEST_SUITE_P(Table, LineThatIsNone,
                         testing::Values(LineRow{"WithoutDate", "REFUSED untrusted package (unsigned): X\n"},
                                         LineRow{"RestOfACutLine", "+0000: REFUSED untrusted package (unsigned): X\n"},
                                         LineRow{"OtherZone", "2026-02-11 09:30:12 +0100: REFUSED: X\n"},
                                         LineRow{"LetterInPlaceOfADigit", "2026-02-1x 09:30:12 +0000: REFUSED: X\n"},
                                         LineRow{"ColonInPlaceOfADigit", "2026-02-1: 09:30:12 +0000: REFUSED: X\n"},
                                         LineRow{"BlankInPlaceOfADigit", "2026-02- 1 09:30:12 +0000: REFUSED: X\n"},
                                         LineRow{"SlashInPlaceOfADigit", "2026-02-1/ 09:30:12 +0000: REFUSED: X\n"},
                                         LineRow{"OtherSeparators", "2026/02/11 09:30:12 +0000: REFUSED: X\n"},
                                         LineRow{"NoDate", "9999999999999999999 +0000: REFUSED: X\n"},
                                         LineRow{"OnlyADate", "2026-02-11 09:30:12 +0000\n"},
                                         LineRow{"NoColon", "2026-02-11 09:30:12 +0000 REFUSED: X\n"},
                                         LineRow{"SemicolonForTheColon", "2026-02-11 09:30:12 +0000; REFUSED: X\n"},
                                         LineRow{"InTheMiddle", "2026-02-11 09:30:12 +0000: not REFUSED: X\n"}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(LastRefusalTest, TheLastOfSeveralCounts) {
  const auto refusal = lastRefusal(
      "2026-02-11 09:30:12 +0000: REFUSED: first\n"
      "2026-02-11 09:30:13 +0000: REFUSED: second\n",
      kNow);

  EXPECT_EQ(refusal->message, "REFUSED: second");
}

TEST(LastRefusalTest, ASuccessAfterwardsOvercomesIt) {
  const auto refusal = lastRefusal(
      "2026-02-11 09:30:12 +0000: REFUSED: first\n"
      "2026-02-11 09:31:12 +0000: coreaudiod restart rc=0\n",
      kNow);

  EXPECT_TRUE(refusal->overcome);
}

TEST(LastRefusalTest, ASuccessBeforeDoesNot) {
  const auto refusal = lastRefusal(
      "2026-02-11 09:30:12 +0000: coreaudiod restart rc=0\n"
      "2026-02-11 09:30:12 +0000: uninstall incomplete; leftover: /x\n",
      kNow);

  EXPECT_FALSE(refusal->overcome);
}

TEST(LastRefusalTest, ADayThatDoesNotExistHasNoAge) {
  const auto refusal = lastRefusal("2026-02-31 09:30:12 +0000: REFUSED: X\n", kNow);

  EXPECT_EQ(refusal->age, std::nullopt);
}

TEST(LastRefusalTest, ALongMessageIsCut) {
  const std::string line = "2026-02-11 09:30:12 +0000: REFUSED" + std::string(5000, 'x') + "\n";

  EXPECT_EQ(lastRefusal(line, kNow)->message.size(), 203U);
}

class LogsOnDisk : public testing::Test {
 protected:
  TemporaryDirectory root;
  const Disk disk{root.path()};
};

TEST_F(LogsOnDisk, BothAreLookedAt) {
  root.makeFile("var/log/halvo-uninstall.log", "2026-02-11 09:30:12 +0000: uninstall incomplete; leftover: /x\n");

  const std::vector<LogView> logs = collectLogs(disk, kNow);

  ASSERT_EQ(logs.size(), 2U);
  EXPECT_STREQ(logs[0].path, "/var/log/halvo-install.log");
  EXPECT_EQ(logs[0].sight, Sight::absent);
  EXPECT_STREQ(logs[1].path, "/var/log/halvo-uninstall.log");
  EXPECT_EQ(logs[1].sight, Sight::present);
  EXPECT_TRUE(logs[1].refusal.has_value());
}

TEST_F(LogsOnDisk, OfALongOneTheLast64KiBAreRead) {
  const std::string line = "2026-02-11 09:30:12 +0000: REFUSED: long ago\n";

  root.makeFile("var/log/halvo-install.log", "\n" + line + std::string(65'536 - 45, '\n'));
  EXPECT_TRUE(collectLogs(disk, kNow)[0].refusal.has_value());

  root.makeFile("var/log/halvo-install.log", "\n" + line + std::string(65'536 - 44, '\n'));
  EXPECT_FALSE(collectLogs(disk, kNow)[0].refusal.has_value());
}

TEST_F(LogsOnDisk, ALinkIsNotRead) {
  root.makeFile("elsewhere", "2026-02-11 09:30:12 +0000: REFUSED: X\n");
  root.makeLink("var/log/halvo-install.log", "../../elsewhere");

  const LogView log = collectLogs(disk, kNow)[0];

  EXPECT_EQ(log.sight, Sight::present);
  EXPECT_EQ(log.item.kind, ItemKind::link);
  EXPECT_FALSE(log.refusal.has_value());
}

}  // namespace
}  // namespace halvo
