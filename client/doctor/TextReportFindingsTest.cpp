// The text report's end: what could not be read, and what is wrong.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client/doctor/Reports.h"
#include "client/doctor/testing/HealthyMac.h"

namespace halvo {
namespace {

using testing::HasSubstr;

constexpr const char* kDate = "2026-02-11 09:30:12 +0000";

std::string screen(const Examination& seen) { return textReport(seen, judge(seen), kDate); }

TEST(TextReportFindingsTest, AFindingAndItsHintAreWrapped) {
  Examination seen = healthyMac();
  seen.staging = {.sight = Sight::present, .kind = ItemKind::folder};

  EXPECT_THAT(screen(seen),
              HasSubstr("\n1 finding:\n"
                        "! /var/db/halvo/install-staging is left of an install.\n"
                        "    Unless an install runs at this moment, one was broken off. The next install\n"
                        "    clears it away and may be refused once for it (staging_failed): install, and\n"
                        "    once more if need be.\n"));
}

TEST(TextReportFindingsTest, ALongFindingIsIndentedBehindItsMark) {
  const Finding finding{"log-kind",
                        "1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 123 text",
                        "1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 hint"};

  EXPECT_THAT(textReport(healthyMac(), {finding}, kDate),
              HasSubstr("\n1 finding:\n"
                        "! 1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 1234567890\n"
                        "  123 text\n"
                        "    1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 1234567890\n"
                        "    hint\n"));
}

TEST(TextReportFindingsTest, AFindingIsMadeVisible) {
  const Finding finding{"log-kind", "text\n\x1B", "hint\n\x1B"};

  EXPECT_THAT(textReport(healthyMac(), {finding}, kDate),
              HasSubstr("\n1 finding:\n! text\\012\\033\n    hint\\012\\033\n"));
}

TEST(TextReportFindingsTest, SeveralFindingsAreCountedAndInTheirOrder) {
  EXPECT_THAT(textReport(healthyMac(), {{"b", "First.", "Do this."}, {"a", "Second.", "Do that."}}, kDate),
              testing::EndsWith("\n2 findings:\n! First.\n    Do this.\n! Second.\n    Do that.\n"));
}

struct NameRow {
  const char* name;
  std::string snapshot;
  const char* paragraph;
};

class SnapshotThatMayNotBeRead : public testing::TestWithParam<NameRow> {};

TEST_P(SnapshotThatMayNotBeRead, IsNamedInVisibleTextOfBoundedLength) {
  Examination seen = healthyMac();
  seen.snapshots.newest[0].name = GetParam().snapshot;
  seen.snapshots.newest[0].driverSight = Sight::unreadable;

  EXPECT_THAT(screen(seen), HasSubstr(GetParam().paragraph));
}

INSTANTIATE_TEST_SUITE_P(
    Table, SnapshotThatMayNotBeRead,
    testing::Values(NameRow{"Hostile", "\x1B[2J\n",
                            "\nYou may not read the driver in \\033[2J\\012. \"sudo halvo-app doctor\" does.\n"},
                    NameRow{"Fits", std::string(66, 'x'),
                            "\nYou may not read the driver in\n"
                            "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx. \"sudo\n"
                            "halvo-app doctor\" does.\n"},
                    NameRow{"IsTooLong", std::string(67, 'x'),
                            "\nYou may not read the driver in\n"
                            "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx.... \"sudo\n"
                            "halvo-app doctor\" does.\n"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(TextReportFindingsTest, WhatMayNotBeReadIsNamedWithTheWayOut) {
  Examination seen = healthyMac();
  seen.snapshots = {.sight = Sight::unreadable, .newest = {}};
  seen.logs[0].sight = Sight::unreadable;

  EXPECT_THAT(screen(seen), HasSubstr("\nYou may not read /var/db/halvo/install-rollback, /var/log/halvo-install.log.\n"
                                      "\"sudo halvo-app doctor\" does.\n"
                                      "\nNothing is found to be wrong.\n"));
}

}  // namespace
}  // namespace halvo
