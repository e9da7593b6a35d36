// What is on the disk after an install that failed somewhere or was killed, and what the next one makes of it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>

#include "HalvoHelper/testing/InstallMachine.h"

namespace halvo {
namespace {

const InstallResult kOk = InstallOk{{"driver", "broker", "daemon_agent"}};
const InstallResult kRolledBack = InstallRolledBack{"/var/log/halvo-install.log"};
const InstallResult kNotStaged = InstallUntrustedPackage{HalvoPkgDistrust::stagingFailed};

const std::string kStagingRoot = "/var/db/halvo/install-staging";
const std::string kStaged = kStagingRoot + "/incoming.pkg";
const std::string kSnapshot = "/var/db/halvo/install-rollback/1771000000";
const std::string kDriver = "/Library/Audio/Plug-Ins/HAL/Halvo.driver";

class InstallRecoveryTest : public testing::Test {
 protected:
  // Ends the process after that many steps. A step is a file system call, a tool run, or a part that the installer
  // writes.
  void installKilledAfter(std::size_t steps) {
    fs_.callsUntilKilled = steps;
    try {
      static_cast<void>(machine_.install());
    } catch (const ProcessKilled&) {
    }
    fs_.callsUntilKilled.reset();
  }

  std::shared_ptr<InMemoryTree> tree_ = std::make_shared<InMemoryTree>();
  InMemoryPrivilegedFS& fs_ = *tree_->memory;
  InstallMachine machine_{tree_};
};

TEST_F(InstallRecoveryTest, SuccessKeepsTheOldPartsInTheSnapshot) {
  EXPECT_EQ(machine_.install(), kOk);

  EXPECT_EQ(machine_.parts(), "new new new new");
  EXPECT_EQ(machine_.snapshot(1'771'000'000), "old old old old");
  EXPECT_FALSE(fs_.exists(kStagingRoot));
}

TEST_F(InstallRecoveryTest, AnInstallerThatFailsHalfwayIsUndoneAndTheSnapshotKept) {
  machine_.installedParts = 2;
  machine_.installerStatus = 1;

  EXPECT_EQ(machine_.install(), kRolledBack);

  EXPECT_EQ(machine_.parts(), "old old old old");
  EXPECT_EQ(machine_.snapshot(1'771'000'000), "old old old old");
  EXPECT_FALSE(fs_.exists(kStagingRoot));
}

TEST_F(InstallRecoveryTest, WhatAFailedInstallerAddedToAMachineWithoutTheProductStays) {
  machine_.removeParts();
  machine_.installedParts = 2;
  machine_.installerStatus = 1;

  EXPECT_EQ(machine_.install(), kRolledBack);

  EXPECT_EQ(machine_.parts(), "new new - -");
  EXPECT_EQ(machine_.snapshot(1'771'000'000), "- - - -");
}

TEST_F(InstallRecoveryTest, ALeftoverPackageMakesOneInstallFailAndTheNextSucceed) {
  fs_.makePrivateDir(kStagingRoot, 0700);
  fs_.files[kStaged] = "left by a killed run";

  EXPECT_EQ(machine_.install(), kNotStaged);
  EXPECT_FALSE(fs_.exists(kStagingRoot));
  EXPECT_EQ(machine_.parts(), "old old old old");

  EXPECT_EQ(machine_.install(), kOk);
}

// One call fails, in an install whose installer succeeds or fails after writing everything.
struct FaultRow {
  const char* name;
  std::string failingCall;
  int installerStatus;
  InstallResult result;
  const char* parts;
  bool stagingLeft;
};
void PrintTo(const FaultRow& row, std::ostream* out) { *out << row.name; }

class FaultTable : public InstallRecoveryTest, public testing::WithParamInterface<FaultRow> {};

TEST_P(FaultTable, LeavesThisBehind) {
  fs_.failing = {GetParam().failingCall};
  machine_.installerStatus = GetParam().installerStatus;

  EXPECT_EQ(machine_.install(), GetParam().result);

  EXPECT_EQ(machine_.parts(), GetParam().parts);
  EXPECT_EQ(fs_.exists(kStagingRoot), GetParam().stagingLeft);
}

std::string saving(const std::string& path, const std::string& name) {
  return "copyTree " + path + " -> " + kSnapshot + "/" + name;
}

std::string restoring(const std::string& path, const std::string& name) {
  return "copyTree " + kSnapshot + "/" + name + " -> " + path;
}

const std::string kBroker = "/Library/PrivilegedHelperTools/halvo-broker";
const std::string kBrokerPlist = "/Library/LaunchDaemons/com.halvo.broker.plist";
const std::string kDaemonPlist = "/Library/LaunchAgents/com.halvo.daemon.plist";

INSTANTIATE_TEST_SUITE_P(
    BeforeTheInstaller, FaultTable,
    testing::Values(FaultRow{"no staging directory", "makePrivateDir " + kStagingRoot + " 700", 0, kNotStaged,
                             "old old old old", false},
                    FaultRow{"no staged copy", "stageFile /Users/ada/Halvo.pkg -> " + kStaged, 0, kNotStaged,
                             "old old old old", false},
                    FaultRow{"no snapshot directory", "makeDir " + kSnapshot, 0, kOk, "new new new new", false},
                    FaultRow{"driver not saved", saving(kDriver, "Halvo.driver"), 0, kOk, "new new new new", false},
                    FaultRow{"staging not cleaned", "removeTree " + kStagingRoot, 0, kOk, "new new new new", true}));

INSTANTIATE_TEST_SUITE_P(
    WithAFailingInstaller, FaultTable,
    testing::Values(
        FaultRow{"nothing else fails", "", 1, kRolledBack, "old old old old", false},
        FaultRow{"no snapshot directory", "makeDir " + kSnapshot, 1, kRolledBack, "old old old old", false},
        FaultRow{"driver not saved", saving(kDriver, "Halvo.driver"), 1, kRolledBack, "new old old old", false},
        FaultRow{"broker not saved", saving(kBroker, "halvo-broker"), 1, kRolledBack, "old new old old", false},
        FaultRow{"broker's property list not saved", saving(kBrokerPlist, "com.halvo.broker.plist"), 1, kRolledBack,
                 "old old new old", false},
        FaultRow{"agent's property list not saved", saving(kDaemonPlist, "com.halvo.daemon.plist"), 1, kRolledBack,
                 "old old old new", false},
        FaultRow{"driver not restored", restoring(kDriver, "Halvo.driver"), 1, kRolledBack, "- old old old", false},
        FaultRow{"broker not restored", restoring(kBroker, "halvo-broker"), 1, kRolledBack, "old - old old", false},
        FaultRow{"broker's property list not restored", restoring(kBrokerPlist, "com.halvo.broker.plist"), 1,
                 kRolledBack, "old old - old", false},
        FaultRow{"agent's property list not restored", restoring(kDaemonPlist, "com.halvo.daemon.plist"), 1,
                 kRolledBack, "old old old -", false},
        FaultRow{"staging not cleaned", "removeTree " + kStagingRoot, 1, kRolledBack, "old old old old", true}));

// The process ends after that many steps of a good install. On this machine it takes 22, of which the second stages the
// package and the last cleans up.
class KilledWhileStaged : public InstallRecoveryTest, public testing::WithParamInterface<std::size_t> {};

TEST_P(KilledWhileStaged, CostsOneFailedStaging) {
  installKilledAfter(GetParam());
  machine_.now += 1;

  EXPECT_EQ(machine_.install(), kNotStaged);
  EXPECT_EQ(machine_.install(), kOk);

  EXPECT_EQ(machine_.parts(), "new new new new");
  EXPECT_FALSE(fs_.exists(kStagingRoot));
}

INSTANTIATE_TEST_SUITE_P(AfterSteps, KilledWhileStaged, testing::Range<std::size_t>(2, 22));

class KilledOutsideStaging : public InstallRecoveryTest, public testing::WithParamInterface<std::size_t> {};

TEST_P(KilledOutsideStaging, CostsNothing) {
  installKilledAfter(GetParam());
  machine_.now += 1;

  EXPECT_EQ(machine_.install(), kOk);

  EXPECT_EQ(machine_.parts(), "new new new new");
  EXPECT_FALSE(fs_.exists(kStagingRoot));
}

INSTANTIATE_TEST_SUITE_P(AfterSteps, KilledOutsideStaging, testing::Values(0, 1, 22));

TEST_F(InstallRecoveryTest, AKillInTheMiddleOfTheInstallerLeavesAMixedMachine) {
  installKilledAfter(16);

  EXPECT_EQ(machine_.parts(), "new new old old");
  EXPECT_EQ(machine_.snapshot(1'771'000'000), "old old old old");
}

}  // namespace
}  // namespace halvo
