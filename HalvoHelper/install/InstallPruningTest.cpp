#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "HalvoHelper/install/InstallSequence.h"
#include "HalvoHelper/testing/InstallBench.h"

namespace halvo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class InstallPruningTest : public testing::Test {
 protected:
  // The calls between the reading of the installed version and that of the clock.
  std::vector<std::string> pruningCalls() const {
    const auto& calls = bench_.calls();
    const auto begin = std::ranges::find(calls, "installedDriverVersion");
    return {begin + 1, std::ranges::find(calls, "epoch")};
  }

  InstallBench bench_;
};

TEST_F(InstallPruningTest, SnapshotsOfMoreThanSevenDaysGo) {
  bench_.fs->listings = {{"/var/db/halvo/install-rollback", {"9", "8", "7", "1"}}};
  bench_.fs->daysAgo = {{"/var/db/halvo/install-rollback/9", 9},
                        {"/var/db/halvo/install-rollback/8", 8},
                        {"/var/db/halvo/install-rollback/7", 7},
                        {"/var/db/halvo/install-rollback/1", -1}};

  bench_.run();

  EXPECT_THAT(
      pruningCalls(),
      ElementsAre("entries /var/db/halvo/install-rollback", "modifiedDaysAgo /var/db/halvo/install-rollback/9",
                  "removeTree /var/db/halvo/install-rollback/9", "modifiedDaysAgo /var/db/halvo/install-rollback/8",
                  "removeTree /var/db/halvo/install-rollback/8", "modifiedDaysAgo /var/db/halvo/install-rollback/7",
                  "modifiedDaysAgo /var/db/halvo/install-rollback/1"));
}

TEST_F(InstallPruningTest, AnEntryWhoseAgeCannotBeReadStays) {
  bench_.fs->listings = {{"/var/db/halvo/install-rollback", {"unreadable", "old"}}};
  bench_.fs->daysAgo = {{"/var/db/halvo/install-rollback/old", 400}};

  bench_.run();

  EXPECT_THAT(pruningCalls(), ElementsAre("entries /var/db/halvo/install-rollback",
                                          "modifiedDaysAgo /var/db/halvo/install-rollback/unreadable",
                                          "modifiedDaysAgo /var/db/halvo/install-rollback/old",
                                          "removeTree /var/db/halvo/install-rollback/old"));
}

TEST_F(InstallPruningTest, AnOldEntryGoesWhateverItsName) {
  bench_.fs->listings = {{"/var/db/halvo/install-rollback", {".DS_Store", "not a number"}}};
  bench_.fs->daysAgo = {{"/var/db/halvo/install-rollback/.DS_Store", 8},
                        {"/var/db/halvo/install-rollback/not a number", 8}};

  bench_.run();

  EXPECT_THAT(bench_.calls(), Contains("removeTree /var/db/halvo/install-rollback/.DS_Store"));
  EXPECT_THAT(bench_.calls(), Contains("removeTree /var/db/halvo/install-rollback/not a number"));
}

TEST_F(InstallPruningTest, ASnapshotThatCannotBeRemovedStopsNothing) {
  bench_.fs->listings = {{"/var/db/halvo/install-rollback", {"8", "9"}}};
  bench_.fs->daysAgo = {{"/var/db/halvo/install-rollback/8", 8}, {"/var/db/halvo/install-rollback/9", 9}};
  bench_.fs->failing = {"removeTree /var/db/halvo/install-rollback/8"};

  EXPECT_EQ(bench_.run(), InstallResult(InstallOk{{"driver", "broker", "daemon_agent"}}));

  EXPECT_THAT(bench_.calls(), Contains("removeTree /var/db/halvo/install-rollback/9"));
}

TEST_F(InstallPruningTest, ARefusedInstallPrunesNothing) {
  bench_.installedVersions = {"9"};

  bench_.run();

  EXPECT_THAT(bench_.calls(), Not(Contains(HasSubstr("install-rollback"))));
}

}  // namespace
}  // namespace halvo
