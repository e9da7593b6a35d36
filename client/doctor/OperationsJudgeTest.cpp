#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client/doctor/testing/HealthyMac.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

void leaveStaging(Examination& seen) { seen.staging = {.sight = Sight::present, .kind = ItemKind::folder}; }

void runFor(Examination& seen, const char* tool, int seconds) {
  seen.tools->push_back({.process = 77, .name = tool, .age = Seconds(seconds)});
}

void refuse(LogView& log, const char* message, int daysAgo) {
  log.refusal =
      Refusal{.date = "2026-02-11 09:30:12 +0000", .age = std::chrono::hours(24 * daysAgo), .message = message};
}

auto hasCode(const char* code) { return testing::Field(&Finding::code, std::string_view(code)); }

class OperationFinding : public testing::TestWithParam<DamageRow> {};

TEST_P(OperationFinding, IsTheOnlyOne) { EXPECT_THAT(findingsAfter(GetParam()), ElementsAre(GetParam().finding)); }

INSTANTIATE_TEST_SUITE_P(
    Left, OperationFinding,
    testing::Values(
        DamageRow{"Staging",
                  leaveStaging,
                  {"staging-left", "/var/db/halvo/install-staging is left of an install.",
                   "Unless an install runs at this moment, one was broken off. The next install clears it away and may "
                   "be refused once for it (staging_failed): install, and once more if need be."}},
        DamageRow{
            "SlowInstaller",
            [](Examination& seen) { runFor(seen, "installer", 600); },
            {"tool-slow", "The helper's installer, process 77, has been running for 10 min.",
             "The helper waits for it without a limit and holds every other change back. Look what it does with "
             "\"ps -o etime,command -p 77\". Ending it with \"sudo kill 77\" fails its step; a failed installer is "
             "rolled back."}},
        DamageRow{
            "SlowPkgutil",
            [](Examination& seen) { runFor(seen, "pkgutil", 60); },
            {"tool-slow", "The helper's pkgutil, process 77, has been running for 60 s.",
             "The helper waits for it without a limit and holds every other change back. Look what it does with "
             "\"ps -o etime,command -p 77\". Ending it with \"sudo kill 77\" fails its step; a failed installer is "
             "rolled back."}},
        DamageRow{
            "LinkForALog",
            [](Examination& seen) { seen.logs[0].item.kind = ItemKind::link; },
            {"log-kind", "/var/log/halvo-install.log is a link, not a file.",
             "The helper's lines go astray, or where somebody else wants them. Look whose it is and remove it: the "
             "helper makes the log again."}},
        DamageRow{
            "FifoForALog",
            [](Examination& seen) { seen.logs[1].item.kind = ItemKind::other; },
            {"log-kind", "/var/log/halvo-uninstall.log is neither file, folder nor link, not a file.",
             "The helper's lines go astray, or where somebody else wants them. Look whose it is and remove it: the "
             "helper makes the log again."}}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Refused, OperationFinding,
    testing::Values(
        DamageRow{"AnotherTeam",
                  [](Examination& seen) { refuse(seen.logs[0], "REFUSED untrusted package (wrong_team): X", 7); },
                  {"install-refused",
                   "The last install did not succeed (2026-02-11 09:30:12 +0000): REFUSED untrusted package "
                   "(wrong_team): X",
                   "The package was refused and nothing was changed. The package is signed by somebody else. Use a "
                   "package from the maker."}},
        DamageRow{
            "NoStagingDirectory",
            [](Examination& seen) { refuse(seen.logs[0], "REFUSED: could not create staging dir /x", 0); },
            {"install-refused",
             "The last install did not succeed (2026-02-11 09:30:12 +0000): REFUSED: could not create staging dir "
             "/x",
             "The helper cannot write to /var/db/halvo: the disk is full, or something else stands in its place. "
             "Put that right and install again."}},
        DamageRow{"NotStaged",
                  [](Examination& seen) { refuse(seen.logs[0], "REFUSED: could not stage /a.pkg -> /x", 0); },
                  {"install-refused",
                   "The last install did not succeed (2026-02-11 09:30:12 +0000): REFUSED: could not stage /a.pkg -> "
                   "/x",
                   "The package was refused and nothing was changed. The helper could not take the package in: it must "
                   "be a regular file, no link, of at most 256 MiB, in a folder that the helper may read, and the disk "
                   "must have room for a copy. Put it into another folder than Downloads, Desktop or Documents and try "
                   "again."}},
        DamageRow{"Downgrade",
                  [](Examination& seen) { refuse(seen.logs[0], "refusing downgrade: installed=2 incoming=1", 0); },
                  {"install-refused",
                   "The last install did not succeed (2026-02-11 09:30:12 +0000): refusing downgrade: installed=2 "
                   "incoming=1",
                   "A newer driver is installed than the manifest names. Use a newer package, or remove the product "
                   "first."}},
        DamageRow{"RolledBack",
                  [](Examination& seen) { refuse(seen.logs[0], "installer failed; rolling back from /x", 0); },
                  {"install-refused",
                   "The last install did not succeed (2026-02-11 09:30:12 +0000): installer failed; rolling back from "
                   "/x",
                   "What had been saved was copied back. /var/log/install.log says why the installer failed; install "
                   "again once that is put right."}},
        DamageRow{"Incomplete",
                  [](Examination& seen) { refuse(seen.logs[1], "uninstall incomplete; leftover: /x", 0); },
                  {"removal-incomplete",
                   "The last removal was not complete (2026-02-11 09:30:12 +0000): uninstall incomplete; leftover: /x",
                   "Look what holds the parts that the line names, and remove the product again."}}),
    [](const auto& row) { return std::string(row.param.name); });

class HarmlessOperation : public testing::TestWithParam<DamageRow> {};

TEST_P(HarmlessOperation, IsNoFinding) { EXPECT_THAT(findingsAfter(GetParam()), IsEmpty()); }

INSTANTIATE_TEST_SUITE_P(
    Table, HarmlessOperation,
    testing::Values(
        DamageRow{"InstallerAtWork",
                  [](Examination& seen) {
                    leaveStaging(seen);
                    runFor(seen, "installer", 599);
                  },
                  {}},
        DamageRow{"QuickTool", [](Examination& seen) { runFor(seen, "dscl", 59); }, {}},
        DamageRow{"OldRefusal",
                  [](Examination& seen) {
                    refuse(seen.logs[0], "REFUSED untrusted package (unsigned): ", 7);
                    *seen.logs[0].refusal->age += Seconds(1);
                  },
                  {}},
        DamageRow{"NoLog", [](Examination& seen) { seen.logs[0] = {.path = seen.logs[0].path, .refusal = {}}; }, {}},
        DamageRow{"UnreadableLog",
                  [](Examination& seen) {
                    seen.logs[0].sight = Sight::unreadable;
                    seen.logs[0].item = {.sight = Sight::unreadable};
                  },
                  {}},
        DamageRow{"RefusalThatWasOvercome",
                  [](Examination& seen) {
                    refuse(seen.logs[0], "REFUSED untrusted package (unsigned): ", 0);
                    seen.logs[0].refusal->overcome = true;
                  },
                  {}},
        DamageRow{"UnreadableStaging", [](Examination& seen) { seen.staging.sight = Sight::unreadable; }, {}},
        DamageRow{"UnknownProcesses", [](Examination& seen) { seen.tools.reset(); }, {}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(OperationsJudgeTest, StagingIsAFindingWhereNobodyKnowsWhatRuns) {
  Examination seen = healthyMac();
  leaveStaging(seen);
  seen.tools.reset();

  EXPECT_THAT(judge(seen), SizeIs(1));
}

TEST(OperationsJudgeTest, EachSlowToolIsAFinding) {
  Examination seen = healthyMac();
  runFor(seen, "dscl", 59);
  runFor(seen, "dscl", 60);
  runFor(seen, "installer", 700);

  EXPECT_THAT(judge(seen), ElementsAre(hasCode("tool-slow"), hasCode("tool-slow")));
}

TEST(OperationsJudgeTest, EachLogIsJudged) {
  Examination seen = healthyMac();
  refuse(seen.logs[0], "REFUSED", 0);
  refuse(seen.logs[1], "uninstall incomplete; leftover: /x", 0);

  EXPECT_THAT(judge(seen), ElementsAre(hasCode("install-refused"), hasCode("removal-incomplete")));
}

TEST(OperationsJudgeTest, ARefusalOfUnknownAgeIsAFinding) {
  Examination seen = healthyMac();
  refuse(seen.logs[0], "REFUSED", 0);
  seen.logs[0].refusal->age.reset();

  EXPECT_THAT(judge(seen), ElementsAre(hasCode("install-refused")));
}

struct HintRow {
  const char* name;
  const char* message;
  const char* hint;
};

class HintOfAnUntrustedPackage : public testing::TestWithParam<HintRow> {};

TEST_P(HintOfAnUntrustedPackage, Is) {
  Examination seen = healthyMac();
  refuse(seen.logs[0], GetParam().message, 0);

  EXPECT_EQ(judge(seen).front().hint, GetParam().hint);
}

constexpr const char* kWithoutReason = "The package was refused and nothing was changed. Use a package from the maker.";

INSTANTIATE_TEST_SUITE_P(
    KnownReason, HintOfAnUntrustedPackage,
    testing::Values(HintRow{"NotSigned", "REFUSED untrusted package (unsigned): X (y)",
                            "The package was refused and nothing was changed. The package is not signed. Use a package "
                            "from the maker."},
                    HintRow{"NewerThanThisProgram",
                            "REFUSED untrusted package (the_quick_brown_fox_jumps_over_a_lazy_dog): X",
                            "The package was refused and nothing was changed. The reason is "
                            "the_quick_brown_fox_jumps_over_a_lazy_dog."}),
    [](const auto& row) { return std::string(row.param.name); });

// Clients have a say in what stands in the brackets.
INSTANTIATE_TEST_SUITE_P(
    NoCode, HintOfAnUntrustedPackage,
    testing::Values(HintRow{"EndOfAnObject", "REFUSED untrusted package (\"},{): X", kWithoutReason},
                    HintRow{"Capital", "REFUSED untrusted package (Unsigned): X", kWithoutReason},
                    HintRow{"SignBeforeTheLetters", "REFUSED untrusted package (`nsigned): X", kWithoutReason},
                    HintRow{"SignBehindTheLetters", "REFUSED untrusted package (unsigned{): X", kWithoutReason},
                    HintRow{"Blank", "REFUSED untrusted package (unsigned ): X", kWithoutReason},
                    HintRow{"Nothing", "REFUSED untrusted package (): X", kWithoutReason},
                    HintRow{"NoBrackets", "REFUSED untrusted package: unsigned", kWithoutReason},
                    HintRow{"BracketsElsewhere", "REFUSED untrusted package: X (unsigned): Y", kWithoutReason}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace halvo
