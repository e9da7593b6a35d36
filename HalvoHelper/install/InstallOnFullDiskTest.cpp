// An installer that fails on a disk that is nearly full: whatever could not be saved or copied back, no part is ever
// left empty or half.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/system/RealProcessRunner.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

using testing::MatchesRegex;

// The package has 351 KiB, each of the five files of the four parts 120.
class InstallOnFullDiskTest : public testing::TestWithParam<int> {
 protected:
  void SetUp() override {
    const ProcessResult mounted = onSmallDisk("true");
    if (mounted.code != 0) GTEST_SKIP() << "this process may not mount file systems: " << mounted.output;
  }

  // What an install leaves where so many KiB are free.
  std::string installWith(int kibFree, const std::string& installerLeaves) const {
    const std::string disk = directory_.path("disk");
    return onSmallDisk("'" HALVO_INSTALL_PROBE "' '" + disk + "' " + std::to_string(kibFree) + " " + installerLeaves)
        .output;
  }

 private:
  ProcessResult onSmallDisk(const std::string& command) const {
    const std::string mount = "mount -t tmpfs -o size=4m none '" + directory_.makeDirectory("disk") + "'";
    return RealProcessRunner().run("/usr/bin/unshare", {"-m", "/bin/sh", "-c", mount + " && " + command});
  }

  TemporaryDirectory directory_;
};

TEST_P(InstallOnFullDiskTest, LeavesEveryPartOldOrNewOrAbsentWhenTheSnapshotFindsNoRoom) {
  EXPECT_THAT(installWith(GetParam(), "spare"),
              MatchesRegex("rolled_back: (old|new|-) (old|new|-) (old|new|-) (old|new|-)"));
}

TEST_P(InstallOnFullDiskTest, LeavesEveryPartOldOrNewOrAbsentWhenTheCopyBackFindsNoRoom) {
  EXPECT_THAT(installWith(GetParam(), "crowded"),
              MatchesRegex("rolled_back: (old|new|-) (old|new|-) (old|new|-) (old|new|-)"));
}

INSTANTIATE_TEST_SUITE_P(KiBFree, InstallOnFullDiskTest, testing::Range(355, 1000, 20));

using InstallOnFullDiskEdgesTest = InstallOnFullDiskTest;

TEST_F(InstallOnFullDiskEdgesTest, WithoutRoomForAnyPartNothingIsSavedAndTheInstallersPartsStay) {
  EXPECT_EQ(installWith(360, "spare"), "rolled_back: new new new new");
}

TEST_F(InstallOnFullDiskEdgesTest, ABundleThatFindsNoRoomIsNotSavedButTheNextPartIs) {
  EXPECT_EQ(installWith(500, "spare"), "rolled_back: new old new new");
}

TEST_F(InstallOnFullDiskEdgesTest, WithRoomForAllPartsTheyComeBack) {
  EXPECT_EQ(installWith(1000, "spare"), "rolled_back: old old old old");
}

// The place of a part is cleared before the saved one is copied back.
TEST_F(InstallOnFullDiskEdgesTest, AnInstallerThatLeavesTheDiskFullCostsThePartsThatCannotBeCopiedBack) {
  EXPECT_EQ(installWith(1000, "crowded"), "rolled_back: - - - -");
}

}  // namespace
}  // namespace halvo
