// What the sequences do to each other when nobody keeps them apart: the reason why the wiring has a mutex, and the
// proof that the explorer sees such holes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/interleaving/Requests.h"

namespace halvo::interleaving {
namespace {

using testing::ElementsAre;
using testing::Eq;

using enum Request;

const std::vector<Request> kThreeInstalls = {install, unstageableInstall, evilInstall};

TEST(SequenceInterleaving, AnEvilPackageTakesThePlaceOfAVerifiedOneAsSoonAsThreeInstallsMeet) {
  const Exploration hole = Explorer::findSimplest(sequences(kThreeInstalls, {Rule::verifiedBytes}), 2);

  EXPECT_THAT(hole.violation, Eq("unverified bytes reach the installer: evil"));
  EXPECT_THAT(hole.story, ElementsAre("install: makePrivateDir /var/db/halvo/install-staging ... "
                                      "copyTree /Library/LaunchAgents/com.halvo.daemon.plist -> "
                                      "/var/db/halvo/install-rollback/NOW/com.halvo.daemon.plist",
                                      "unstageable install: makePrivateDir /var/db/halvo/install-staging ... "
                                      "removeTree /var/db/halvo/install-staging",
                                      "evil install: makePrivateDir /var/db/halvo/install-staging ... "
                                      "pkgutil --check-signature /var/db/halvo/install-staging/incoming.pkg",
                                      "install: installer -pkg /var/db/halvo/install-staging/incoming.pkg -target /"));
}

TEST(SequenceInterleaving, ThatHoleTakesTwoPreemptions) {
  EXPECT_THAT(Explorer(sequences(kThreeInstalls, {Rule::verifiedBytes}), 1).run().violation, Eq(std::nullopt));
}

struct PairRow {
  const char* name;
  std::vector<Request> requests;
};

std::string rowName(const testing::TestParamInfo<PairRow>& row) { return row.param.name; }

class SequencePair : public testing::TestWithParam<PairRow> {};

TEST_P(SequencePair, BringsNoUnverifiedBytesToTheInstaller) {
  const Exploration result = Explorer(sequences(GetParam().requests, {Rule::verifiedBytes})).run();

  EXPECT_THAT(result.violation, Eq(std::nullopt));
  EXPECT_GT(result.schedules, 100);
}

INSTANTIATE_TEST_SUITE_P(Table, SequencePair,
                         testing::Values(PairRow{"GoodAndEvil", {install, evilInstall}},
                                         PairRow{"EvilAndUnstageable", {evilInstall, unstageableInstall}},
                                         PairRow{"EvilAndUninstall", {evilInstall, uninstall}}),
                         rowName);

struct HoleRow {
  const char* name;
  std::vector<Request> requests;
  const char* violation;
};

class SequenceHole : public testing::TestWithParam<HoleRow> {};

TEST_P(SequenceHole, IsFoundWithOnePreemption) {
  EXPECT_THAT(Explorer(sequences(GetParam().requests), 0).run().violation, Eq(std::nullopt));
  EXPECT_THAT(Explorer(sequences(GetParam().requests), 1).run().violation, Eq(GetParam().violation));
}

constexpr const char* kStagingRemoved = "another run's staging is removed";
constexpr const char* kEndedInTheMiddle = "the process ends in the middle of a run";

TEST(SequenceInterleaving, AnUninstallTakesTheSnapshotOfAnInstallThatMayNeedIt) {
  const auto makeScene = sequences({failingInstall, uninstall}, {Rule::snapshot});

  EXPECT_THAT(Explorer(makeScene, 1).run().violation, Eq("another run's snapshot is removed"));
}

INSTANTIATE_TEST_SUITE_P(
    Table, SequenceHole,
    testing::Values(HoleRow{"RefusedInstallRemovesStaging", {install, unstageableInstall}, kStagingRemoved},
                    HoleRow{"EvilInstallRemovesStaging", {install, evilInstall}, kStagingRemoved},
                    HoleRow{"UninstallRemovesStaging", {install, uninstall}, kStagingRemoved},
                    HoleRow{"FinalRemovalCutsOffAnInstall", {install, finalRemoval}, kEndedInTheMiddle},
                    HoleRow{"FinalRemovalCutsOffAnUninstall", {uninstall, finalRemoval}, kEndedInTheMiddle},
                    HoleRow{"FinalRemovalCutsOffABundleRemoval", {bundleRemoval, finalRemoval}, kEndedInTheMiddle}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace halvo::interleaving
