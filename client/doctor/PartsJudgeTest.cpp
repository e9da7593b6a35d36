#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/system/ProductPaths.h"
#include "client/doctor/testing/HealthyMac.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;

auto hasCode(const char* code) { return Field(&Finding::code, std::string_view(code)); }

class PartFinding : public testing::TestWithParam<DamageRow> {};

TEST_P(PartFinding, IsTheOnlyOne) { EXPECT_THAT(findingsAfter(GetParam()), ElementsAre(GetParam().finding)); }

INSTANTIATE_TEST_SUITE_P(
    Table, PartFinding,
    testing::Values(
        DamageRow{"Missing",
                  [](Examination& seen) { partAt(seen, kBrokerPath).item = {}; },
                  {"part-missing", "/Library/PrivilegedHelperTools/halvo-broker is missing.",
                   "The product is not whole: an install or a removal was cut off, or somebody removed the part. "
                   "Install the package again."}},
        DamageRow{"ApplicationMissing",
                  [](Examination& seen) { partAt(seen, kApplicationPath).item = {}; },
                  {"application-missing", "/Applications/Halvo.app is missing.",
                   "launchd takes the helper out of the application. Put Halvo.app into /Applications and open it."}},
        DamageRow{"Link",
                  [](Examination& seen) { partAt(seen, kDriverBundlePath).item.kind = ItemKind::link; },
                  {"part-kind", "/Library/Audio/Plug-Ins/HAL/Halvo.driver is a link, not a folder.",
                   "Nobody but the product should put something there, and this may lead elsewhere. Look whose it is "
                   "and remove it. Install the package again."}},
        DamageRow{
            "Fifo",
            [](Examination& seen) { partAt(seen, kDaemonPlistPath).item.kind = ItemKind::other; },
            {"part-kind", "/Library/LaunchAgents/com.halvo.daemon.plist is neither file, folder nor link, not a file.",
             "Nobody but the product should put something there, and this may lead elsewhere. Look whose it is "
             "and remove it. Install the package again."}},
        DamageRow{"OfAnOrdinaryUser",
                  [](Examination& seen) { partAt(seen, kBrokerPath).item.owner = 501; },
                  {"part-owner", "/Library/PrivilegedHelperTools/halvo-broker belongs to 501:wheel, not to root:wheel.",
                   "Others than root may be able to change what runs with the system's rights. Look who changed it. "
                   "Install the package again."}},
        DamageRow{
            "OfAnotherGroup",
            [](Examination& seen) { partAt(seen, kBrokerPlistPath).item.group = 20; },
            {"part-owner", "/Library/LaunchDaemons/com.halvo.broker.plist belongs to root:staff, not to root:wheel.",
             "Others than root may be able to change what runs with the system's rights. Look who changed it. "
             "Install the package again."}},
        DamageRow{"ForEverybodyToChange",
                  [](Examination& seen) { partAt(seen, kBrokerPath).item.mode = 0777; },
                  {"part-mode", "/Library/PrivilegedHelperTools/halvo-broker has mode 777, not 755.",
                   "Others than root can change what runs with the system's rights. Install the package again."}},
        DamageRow{"ForTheGroupToChange",
                  [](Examination& seen) { partAt(seen, kBrokerPath).item.mode = 0775; },
                  {"part-mode", "/Library/PrivilegedHelperTools/halvo-broker has mode 775, not 755.",
                   "Others than root can change what runs with the system's rights. Install the package again."}},
        DamageRow{"ForAllButTheGroupToChange",
                  [](Examination& seen) { partAt(seen, kBrokerPath).item.mode = 0706; },
                  {"part-mode", "/Library/PrivilegedHelperTools/halvo-broker has mode 706, not 755.",
                   "Others than root can change what runs with the system's rights. Install the package again."}},
        DamageRow{"ForOthersToRunOnly",
                  [](Examination& seen) { partAt(seen, kBrokerPath).item.mode = 0711; },
                  {"part-mode", "/Library/PrivilegedHelperTools/halvo-broker has mode 711, not 755.",
                   "Who needs it may not be able to use it. Install the package again."}},
        DamageRow{"WithTheRightsOfItsOwner",
                  [](Examination& seen) { partAt(seen, kBrokerPath).item.mode = 04755; },
                  {"part-mode", "/Library/PrivilegedHelperTools/halvo-broker has mode 4755, not 755.",
                   "It allows more than it has to. Install the package again."}},
        DamageRow{"ForOthersToRunAndNotToRead",
                  [](Examination& seen) { partAt(seen, kDaemonPlistPath).item.mode = 0641; },
                  {"part-mode", "/Library/LaunchAgents/com.halvo.daemon.plist has mode 641, not 644.",
                   "It allows more than it has to. Install the package again."}},
        DamageRow{"TooNarrow",
                  [](Examination& seen) { partAt(seen, kDaemonPlistPath).item.mode = 0600; },
                  {"part-mode", "/Library/LaunchAgents/com.halvo.daemon.plist has mode 600, not 644.",
                   "Who needs it may not be able to use it. Install the package again."}},
        DamageRow{"ApplicationForEverybodyToChange",
                  [](Examination& seen) { partAt(seen, kApplicationPath).item.mode = 0757; },
                  {"part-mode", "/Applications/Halvo.app has mode 757: everybody can change it.",
                   "Any program of any user can change what stands there. Look who allowed it. Put a fresh Halvo.app "
                   "into /Applications."}},
        DamageRow{"WithoutVersion",
                  [](Examination& seen) { partAt(seen, kDriverBundlePath).versionSight = Sight::absent; },
                  {"part-version", "/Library/Audio/Plug-Ins/HAL/Halvo.driver has no version that can be read.",
                   "Its property list is missing or damaged, so that the versions of packages cannot be compared with "
                   "it. Install the package again."}},
        DamageRow{"ApplicationThatIsALink",
                  [](Examination& seen) { partAt(seen, kApplicationPath).item.kind = ItemKind::link; },
                  {"part-kind", "/Applications/Halvo.app is a link, not a folder.",
                   "Nobody but the product should put something there, and this may lead elsewhere. Look whose it is "
                   "and remove it. Put a fresh Halvo.app into /Applications."}},
        DamageRow{"FolderInPlaceOfAFile",
                  [](Examination& seen) { partAt(seen, kBrokerPlistPath).item.kind = ItemKind::folder; },
                  {"part-kind", "/Library/LaunchDaemons/com.halvo.broker.plist is a folder, not a file.",
                   "Nobody but the product should put something there, and this may lead elsewhere. Look whose it is "
                   "and remove it. Install the package again."}},
        DamageRow{"ApplicationWithoutVersion",
                  [](Examination& seen) { partAt(seen, kApplicationPath).versionSight = Sight::absent; },
                  {"part-version", "/Applications/Halvo.app has no version that can be read.",
                   "Its property list is missing or damaged, so that the versions of packages cannot be compared with "
                   "it. Put a fresh Halvo.app into /Applications."}},
        DamageRow{"RecordWithoutVersion",
                  [](Examination& seen) { partAt(seen, kPackageReceiptPath).versionSight = Sight::absent; },
                  {"part-version", "/var/db/receipts/com.halvo.pkg.plist has no version that can be read.",
                   "Its property list is missing or damaged, so that the versions of packages cannot be compared with "
                   "it. Install the package again."}},
        DamageRow{"WithoutRecord",
                  [](Examination& seen) { partAt(seen, kPackageReceiptPath).item = {}; },
                  {"receipt-missing", "The system has no record of the package com.halvo.pkg.",
                   "The parts did not come by a package, or somebody removed the record. Install the package again."}}),
    [](const auto& row) { return std::string(row.param.name); });

class HarmlessPart : public testing::TestWithParam<DamageRow> {};

TEST_P(HarmlessPart, IsNoFinding) { EXPECT_THAT(findingsAfter(GetParam()), IsEmpty()); }

INSTANTIATE_TEST_SUITE_P(
    Table, HarmlessPart,
    testing::Values(
        DamageRow{"ApplicationOfAnAdministrator",
                  [](Examination& seen) { partAt(seen, kApplicationPath).item.owner = 501; },
                  {}},
        DamageRow{"ApplicationForAdministratorsToChange",
                  [](Examination& seen) { partAt(seen, kApplicationPath).item.mode = 0775; },
                  {}},
        DamageRow{
            "Unreadable", [](Examination& seen) { partAt(seen, kBrokerPath).item = {.sight = Sight::unreadable}; }, {}},
        DamageRow{"UnreadableRecord",
                  [](Examination& seen) { partAt(seen, kPackageReceiptPath).item = {.sight = Sight::unreadable}; },
                  {}},
        DamageRow{"UnreadableApplication",
                  [](Examination& seen) { partAt(seen, kApplicationPath).item = {.sight = Sight::unreadable}; },
                  {}},
        DamageRow{"UnreadableVersion",
                  [](Examination& seen) { partAt(seen, kDriverBundlePath).versionSight = Sight::unreadable; },
                  {}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(PartsJudgeTest, WithoutAnyPartOneFindingSpeaksForAll) {
  Examination seen = healthyMac();
  for (const char* path : kInstalledParts) partAt(seen, path).item = {};
  partAt(seen, kPackageReceiptPath).item = {};

  EXPECT_THAT(judge(seen),
              ElementsAre(Finding{"nothing-installed", "None of the product's system parts is installed.",
                                  "Without them there is no audio device. Install the package: \"halvo-app install "
                                  "PACKAGE --manifest FILE\"."}));
}

TEST(PartsJudgeTest, OfASinglePartTheOthersAreMissing) {
  Examination seen = healthyMac();
  partAt(seen, kDriverBundlePath).item = {};
  partAt(seen, kBrokerPath).item = {};
  partAt(seen, kBrokerPlistPath).item = {};
  partAt(seen, kDaemonPlistPath).item = {.sight = Sight::unreadable};

  EXPECT_THAT(judge(seen), ElementsAre(hasCode("part-missing"), hasCode("part-missing"), hasCode("part-missing")));
}

TEST(PartsJudgeTest, OwnerAndModeAreTwoFindings) {
  Examination seen = healthyMac();
  partAt(seen, kBrokerPath).item.owner = 501;
  partAt(seen, kBrokerPath).item.mode = 0777;

  EXPECT_THAT(judge(seen), ElementsAre(hasCode("part-owner"), hasCode("part-mode")));
}

// Owner, mode and version of a link say nothing about what it leads to.
TEST(PartsJudgeTest, WhatIsOfTheWrongKindIsJudgedNoFurther) {
  Examination seen = healthyMac();
  partAt(seen, kDriverBundlePath).item = {.sight = Sight::present, .kind = ItemKind::link, .owner = 501, .mode = 0777};
  partAt(seen, kDriverBundlePath).versionSight = Sight::absent;

  EXPECT_THAT(judge(seen), ElementsAre(hasCode("part-kind")));
}

TEST(PartsJudgeTest, ARecordOfNothingIsAFinding) {
  Examination seen = healthyMac();
  for (const char* path : kInstalledParts) partAt(seen, path).item = {};

  EXPECT_THAT(
      judge(seen),
      ElementsAre(hasCode("nothing-installed"),
                  Finding{"receipt-left",
                          "The system has a record of the package com.halvo.pkg, of which nothing is installed.",
                          "The parts were removed by hand. Install the package again, or remove the record with "
                          "\"sudo pkgutil --forget com.halvo.pkg\"."}));
}

}  // namespace
}  // namespace halvo
