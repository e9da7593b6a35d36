#include "client/doctor/Findings.h"

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

TEST(FindingsTest, TheMostUrgentIsFirst) {
  Examination seen = healthyMac();
  seen.snapshots.newest[0].missing = {"halvo-broker"};
  seen.logs[1].refusal = Refusal{.message = "uninstall incomplete; leftover: /x"};
  seen.logs[0].refusal = Refusal{.message = "REFUSED"};
  seen.staging = {.sight = Sight::present, .kind = ItemKind::folder};
  partAt(seen, kBrokerPath).item = {};
  seen.rightAfter = RightState::missing;
  seen.service.graphicalUsers.reset();

  EXPECT_THAT(judge(seen), ElementsAre(hasCode("users-unknown"), hasCode("right-missing"), hasCode("part-missing"),
                                       hasCode("staging-left"), hasCode("install-refused"),
                                       hasCode("removal-incomplete"), hasCode("snapshot-partial")));
}

TEST(FindingsTest, WhoMayReadEverythingMissesNoPlace) { EXPECT_THAT(unreadablePlaces(healthyMac()), IsEmpty()); }

TEST(FindingsTest, WhatIsAbsentIsNotUnreadable) {
  Examination seen = healthyMac();
  partAt(seen, kBrokerPath).item = {};
  partAt(seen, kDriverBundlePath).versionSight = Sight::absent;
  seen.snapshots = {};
  seen.logs[0].sight = Sight::absent;

  EXPECT_THAT(unreadablePlaces(seen), IsEmpty());
}

struct PlaceRow {
  const char* name;
  void (*hide)(Examination& seen);
  const char* place;
};

class UnreadablePlace : public testing::TestWithParam<PlaceRow> {};

TEST_P(UnreadablePlace, IsNamed) {
  Examination seen = healthyMac();
  GetParam().hide(seen);

  EXPECT_THAT(unreadablePlaces(seen), ElementsAre(GetParam().place));
}

INSTANTIATE_TEST_SUITE_P(
    Table, UnreadablePlace,
    testing::Values(
        PlaceRow{"Part", [](Examination& seen) { partAt(seen, kBrokerPath).item.sight = Sight::unreadable; },
                 "/Library/PrivilegedHelperTools/halvo-broker"},
        PlaceRow{"Version", [](Examination& seen) { partAt(seen, kDriverBundlePath).versionSight = Sight::unreadable; },
                 "the version of /Library/Audio/Plug-Ins/HAL/Halvo.driver"},
        PlaceRow{"Snapshots", [](Examination& seen) { seen.snapshots.sight = Sight::unreadable; },
                 "/var/db/halvo/install-rollback"},
        PlaceRow{"DriverOfASnapshot",
                 [](Examination& seen) { seen.snapshots.newest[0].driverSight = Sight::unreadable; },
                 "the driver in 1771000000"},
        PlaceRow{"Staging", [](Examination& seen) { seen.staging.sight = Sight::unreadable; },
                 "/var/db/halvo/install-staging"},
        PlaceRow{"InstallLog", [](Examination& seen) { seen.logs[0].sight = Sight::unreadable; },
                 "/var/log/halvo-install.log"},
        PlaceRow{"RemovalLog", [](Examination& seen) { seen.logs[1].sight = Sight::unreadable; },
                 "/var/log/halvo-uninstall.log"},
        PlaceRow{"Processes", [](Examination& seen) { seen.tools.reset(); }, "the list of processes"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(FindingsTest, EachUnreadablePartAndDriverIsNamed) {
  Examination seen = healthyMac();
  seen.snapshots.newest.push_back(seen.snapshots.newest[0]);
  seen.snapshots.newest[0].driverSight = Sight::unreadable;
  seen.snapshots.newest[1].driverSight = Sight::unreadable;
  partAt(seen, kBrokerPath).item.sight = Sight::unreadable;
  partAt(seen, kDaemonPlistPath).item.sight = Sight::unreadable;

  EXPECT_THAT(unreadablePlaces(seen),
              ElementsAre("/Library/PrivilegedHelperTools/halvo-broker", "/Library/LaunchAgents/com.halvo.daemon.plist",
                          "the driver in 1771000000", "the driver in 1771000000"));
}

}  // namespace
}  // namespace halvo
