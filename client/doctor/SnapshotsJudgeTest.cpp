#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client/doctor/testing/HealthyMac.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kPartialHint =
    "These parts were not installed at that time, or there was no room to save them: what is copied back from there is "
    "not the whole product. See that the disk has room; the next install saves all that is there.";

void lose(Examination& seen, std::initializer_list<std::string> parts) { seen.snapshots.newest[0].missing = parts; }

class SnapshotFinding : public testing::TestWithParam<DamageRow> {};

TEST_P(SnapshotFinding, IsTheOnlyOne) { EXPECT_THAT(findingsAfter(GetParam()), ElementsAre(GetParam().finding)); }

INSTANTIATE_TEST_SUITE_P(
    Table, SnapshotFinding,
    testing::Values(
        DamageRow{"OnePartLeft",
                  [](Examination& seen) {
                    lose(seen, {"halvo-broker", "com.halvo.broker.plist", "com.halvo.daemon.plist"});
                  },
                  {"snapshot-partial",
                   "The snapshot 1771000000 lacks halvo-broker, com.halvo.broker.plist, com.halvo.daemon.plist.",
                   kPartialHint}},
        DamageRow{"WithoutDriver",
                  [](Examination& seen) {
                    lose(seen, {"Halvo.driver"});
                    seen.snapshots.newest[0].driverSight = Sight::absent;
                  },
                  {"snapshot-partial", "The snapshot 1771000000 lacks Halvo.driver.", kPartialHint}},
        DamageRow{"LinkThatLacksParts",
                  [](Examination& seen) {
                    lose(seen, {"halvo-broker"});
                    seen.snapshots.newest[0].item.kind = ItemKind::link;
                    seen.snapshots.newest[0].driverSight = Sight::absent;
                  },
                  {"snapshot-kind", "/var/db/halvo/install-rollback/1771000000 is a link, not a folder.",
                   "The helper makes folders there and nothing else. Look whose it is, and remove it."}},
        DamageRow{"FileForASnapshot",
                  [](Examination& seen) { seen.snapshots.newest[0].item.kind = ItemKind::file; },
                  {"snapshot-kind", "/var/db/halvo/install-rollback/1771000000 is a file, not a folder.",
                   "The helper makes folders there and nothing else. Look whose it is, and remove it."}},
        DamageRow{"OnlyTheSecondIsPartial",
                  [](Examination& seen) {
                    seen.snapshots.newest.push_back(seen.snapshots.newest[0]);
                    seen.snapshots.newest[1].name = "1770000000";
                    seen.snapshots.newest[1].missing = {"halvo-broker"};
                  },
                  {"snapshot-partial", "The snapshot 1770000000 lacks halvo-broker.", kPartialHint}}),
    [](const auto& row) { return std::string(row.param.name); });

class HarmlessSnapshot : public testing::TestWithParam<DamageRow> {};

TEST_P(HarmlessSnapshot, IsNoFinding) { EXPECT_THAT(findingsAfter(GetParam()), IsEmpty()); }

INSTANTIATE_TEST_SUITE_P(
    Table, HarmlessSnapshot,
    testing::Values(
        DamageRow{"OfAFirstInstall",
                  [](Examination& seen) {
                    lose(seen, {"Halvo.driver", "halvo-broker", "com.halvo.broker.plist", "com.halvo.daemon.plist"});
                    seen.snapshots.newest[0].driverSight = Sight::absent;
                  },
                  {}},
        DamageRow{"UnreadableOne",
                  [](Examination& seen) {
                    seen.snapshots.newest[0].item = {.sight = Sight::unreadable};
                    seen.snapshots.newest[0].driverSight = Sight::unreadable;
                  },
                  {}},
        DamageRow{"RemovedMeanwhile", [](Examination& seen) { seen.snapshots.newest[0] = {.name = "1771000000"}; }, {}},
        DamageRow{"UnreadableDriver",
                  [](Examination& seen) { seen.snapshots.newest[0].driverSight = Sight::unreadable; },
                  {}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(SnapshotsJudgeTest, APartialOneCanBeDamagedAsWell) {
  Examination seen = healthyMac();
  lose(seen, {"halvo-broker"});
  seen.snapshots.newest[0].driverSight = Sight::absent;

  EXPECT_THAT(judge(seen), ElementsAre(testing::Field(&Finding::code, std::string_view("snapshot-partial")),
                                       testing::Field(&Finding::code, std::string_view("snapshot-damaged"))));
}

}  // namespace
}  // namespace halvo
