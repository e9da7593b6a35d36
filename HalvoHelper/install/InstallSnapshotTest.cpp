// What snapshots hold, when they go and what they bring back, in memory and on real files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/testing/InstallMachine.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "HalvoHelper/testing/TreeKind.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const InstallResult kOk = InstallOk{{"driver", "broker", "daemon_agent"}};
const InstallResult kRolledBack = InstallRolledBack{"/var/log/halvo-install.log"};

const std::string kRollbackRoot = "/var/db/halvo/install-rollback";
const std::string kBroker = "/Library/PrivilegedHelperTools/halvo-broker";
const std::string kDriver = "/Library/Audio/Plug-Ins/HAL/Halvo.driver";

class InstallSnapshotTest : public testing::TestWithParam<TreeKind> {
 protected:
  // A snapshot from an earlier install, or something else of that name.
  void makeEntry(const std::string& name, std::int64_t daysAgo) const {
    tree_->write(kRollbackRoot + "/" + name + "/halvo-broker", "earlier");
    tree_->setDaysAgo(kRollbackRoot + "/" + name, daysAgo);
  }
  void makeFile(const std::string& name, std::int64_t daysAgo) const {
    tree_->write(kRollbackRoot + "/" + name, "foreign");
    tree_->setDaysAgo(kRollbackRoot + "/" + name, daysAgo);
  }

  TemporaryDirectory directory_;
  std::shared_ptr<const FileTree> tree_ = GetParam().make(directory_.path());
  InstallMachine machine_{tree_};
};

INSTANTIATE_TEST_SUITE_P(On, InstallSnapshotTest, kTreeKinds, treeKindName);

TEST_P(InstallSnapshotTest, IsNamedByTheTimeAndHoldsTheFourPartsByTheirLastNames) {
  EXPECT_EQ(machine_.install(), kOk);

  EXPECT_THAT(
      tree_->listing(kRollbackRoot),
      ElementsAre("/", "/1771000000/", "/1771000000/Halvo.driver/", "/1771000000/Halvo.driver/Contents/",
                  "/1771000000/Halvo.driver/Contents/Info.plist=old", "/1771000000/Halvo.driver/Contents/MacOS/",
                  "/1771000000/Halvo.driver/Contents/MacOS/Halvo=old", "/1771000000/com.halvo.broker.plist=old",
                  "/1771000000/com.halvo.daemon.plist=old", "/1771000000/halvo-broker=old"));
}

TEST_P(InstallSnapshotTest, OfAMachineWithoutTheProductIsEmpty) {
  machine_.removeParts();

  EXPECT_EQ(machine_.install(), kOk);

  EXPECT_THAT(tree_->listing(kRollbackRoot), ElementsAre("/", "/1771000000/"));
}

TEST_P(InstallSnapshotTest, BringsBackWhatAFailedInstallerReplaced) {
  machine_.installerStatus = 1;

  EXPECT_EQ(machine_.install(), kRolledBack);

  EXPECT_EQ(machine_.parts(), "old old old old");
  EXPECT_THAT(tree_->listing("/var/db/halvo/install-staging"), IsEmpty());
}

TEST_P(InstallSnapshotTest, AFileThatAFailedInstallerAddedInsideThePreviousDriverGoes) {
  machine_.installerStatus = 1;
  machine_.installerAlso = [&] { tree_->write(kDriver + "/Contents/Resources/added", "new"); };

  EXPECT_EQ(machine_.install(), kRolledBack);

  EXPECT_THAT(tree_->listing(kDriver), ElementsAre("/", "/Contents/", "/Contents/Info.plist=old", "/Contents/MacOS/",
                                                   "/Contents/MacOS/Halvo=old"));
}

TEST_P(InstallSnapshotTest, AFileThatAFailedInstallerTookOutOfTheDriverComesBack) {
  machine_.installerStatus = 1;
  machine_.installerAlso = [&] { tree_->fs()->removeTree(kDriver + "/Contents/MacOS"); };

  EXPECT_EQ(machine_.install(), kRolledBack);

  EXPECT_EQ(machine_.parts(), "old old old old");
}

TEST_P(InstallSnapshotTest, ALaterInstallMakesAnotherOne) {
  ASSERT_EQ(machine_.install(), kOk);
  machine_.newContents = "newer";
  machine_.now += 1;

  EXPECT_EQ(machine_.install(), kOk);

  EXPECT_EQ(machine_.snapshot(1'771'000'000), "old old old old");
  EXPECT_EQ(machine_.snapshot(1'771'000'001), "new new new new");
}

TEST_P(InstallSnapshotTest, ASecondInstallInTheSameSecondOverwritesItsItems) {
  ASSERT_EQ(machine_.install(), kOk);
  machine_.newContents = "newer";

  EXPECT_EQ(machine_.install(), kOk);

  EXPECT_EQ(machine_.parts(), "newer newer newer newer");
  EXPECT_EQ(machine_.snapshot(1'771'000'000), "new new new new");
}

// The second install of that second has no broker to save: what the first one saved is still there, and comes back.
TEST_P(InstallSnapshotTest, APartThatGoesBetweenTwoInstallsOfOneSecondComesBackAsItWasBeforeTheFirst) {
  ASSERT_EQ(machine_.install(), kOk);
  ASSERT_TRUE(tree_->fs()->remove(kBroker));
  machine_.newContents = "newer";
  machine_.installerStatus = 1;

  EXPECT_EQ(machine_.install(), kRolledBack);

  EXPECT_EQ(machine_.snapshot(1'771'000'000), "new old new new");
  EXPECT_EQ(machine_.parts(), "new old new new");
}

TEST_P(InstallSnapshotTest, EntriesOfMoreThanSevenDaysGoWhateverTheirNameAndKind) {
  makeEntry("1770000001", 8);
  makeEntry("1770000002", 7);
  makeEntry("1770000003", 0);
  makeEntry("1770000004", -3);
  makeEntry("not a number", 400);
  makeFile(".DS_Store", 9);
  makeFile("note", 6);

  EXPECT_EQ(machine_.install(), kOk);

  EXPECT_THAT(tree_->fs()->entries(kRollbackRoot),
              UnorderedElementsAre("1770000002", "1770000003", "1770000004", "note", "1771000000"));
}

TEST_P(InstallSnapshotTest, AnOldSnapshotOfTheSameNameGoesBeforeTheNewOneIsMade) {
  makeEntry("1771000000", 8);
  ASSERT_TRUE(tree_->fs()->remove(kBroker));

  EXPECT_EQ(machine_.install(), kOk);

  EXPECT_EQ(machine_.snapshot(1'771'000'000), "old - old old");
}

TEST_P(InstallSnapshotTest, IsAsYoungAsTheInstallHoweverOldThePartsAre) {
  tree_->setDaysAgo(kBroker, 100);
  tree_->setDaysAgo(kDriver, 100);
  ASSERT_EQ(machine_.install(), kOk);
  machine_.now += 1;

  EXPECT_EQ(machine_.install(), kOk);

  EXPECT_EQ(machine_.snapshot(1'771'000'000), "old old old old");
}

}  // namespace
}  // namespace halvo
