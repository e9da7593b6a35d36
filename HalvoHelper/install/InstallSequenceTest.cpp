#include "HalvoHelper/install/InstallSequence.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "HalvoHelper/testing/InstallBench.h"

namespace halvo {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::Ge;
using testing::HasSubstr;
using testing::Le;
using testing::Not;
using testing::StartsWith;

const InstallResult kOk = InstallOk{{"driver", "broker", "daemon_agent"}};

// time(2) may lag behind this clock by a tick, and then be a second behind.
std::int64_t wallClockSeconds() { return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()); }

class InstallSequenceTest : public testing::Test {
 protected:
  InstallBench bench_;
};

TEST_F(InstallSequenceTest, ASuccessfulInstallMakesExactlyTheseCalls) {
  bench_.guiUids = {502, 501};

  EXPECT_EQ(bench_.run(), kOk);

  EXPECT_THAT(
      bench_.calls(),
      ElementsAre(
          "makePrivateDir /var/db/halvo/install-staging 700",
          "stageFile /Users/ada/Halvo 2.pkg -> /var/db/halvo/install-staging/incoming.pkg",
          "run /usr/sbin/pkgutil --check-signature /var/db/halvo/install-staging/incoming.pkg",
          "log: package trusted: Developer ID Installer: Halvo Audio (QX4TRM2ZL9)",  //
          "runningSomewhereFlags",                                                   //
          "installedDriverVersion",                                                  //
          "entries /var/db/halvo/install-rollback",                                  //
          "epoch",                                                                   //
          "makeDir /var/db/halvo/install-rollback/1771000000",                       //
          "exists /Library/Audio/Plug-Ins/HAL/Halvo.driver",
          "copyTree /Library/Audio/Plug-Ins/HAL/Halvo.driver -> /var/db/halvo/install-rollback/1771000000/Halvo.driver",
          "exists /Library/PrivilegedHelperTools/halvo-broker",
          "copyTree /Library/PrivilegedHelperTools/halvo-broker -> "
          "/var/db/halvo/install-rollback/1771000000/halvo-broker",
          "exists /Library/LaunchDaemons/com.halvo.broker.plist",
          "copyTree /Library/LaunchDaemons/com.halvo.broker.plist -> "
          "/var/db/halvo/install-rollback/1771000000/com.halvo.broker.plist",
          "exists /Library/LaunchAgents/com.halvo.daemon.plist",
          "copyTree /Library/LaunchAgents/com.halvo.daemon.plist -> "
          "/var/db/halvo/install-rollback/1771000000/com.halvo.daemon.plist",
          "run /usr/sbin/installer -pkg /var/db/halvo/install-staging/incoming.pkg -target /",
          "run /bin/launchctl bootout system/com.halvo.broker",
          "run /bin/launchctl bootstrap system /Library/LaunchDaemons/com.halvo.broker.plist",
          "run /usr/bin/killall coreaudiod",  //
          "log: coreaudiod restart rc=0",     //
          "activeGuiUids",                    //
          "run /bin/launchctl bootstrap gui/502 /Library/LaunchAgents/com.halvo.daemon.plist",
          "log: daemon bootstrap gui/502 rc=0",
          "run /bin/launchctl bootstrap gui/501 /Library/LaunchAgents/com.halvo.daemon.plist",
          "log: daemon bootstrap gui/501 rc=0",  //
          "removeTree /var/db/halvo/install-staging"));
}

TEST_F(InstallSequenceTest, APackagePathThatLooksLikeAnOptionReachesNoTool) {
  InstallSequence sequence = bench_.sequence();
  sequence.pkgPath = "-allowUntrusted";

  EXPECT_EQ(sequence.run(false), kOk);

  EXPECT_THAT(bench_.calls(), Contains("stageFile -allowUntrusted -> /var/db/halvo/install-staging/incoming.pkg"));
  EXPECT_THAT(bench_.calls(), Not(Contains(AllOf(StartsWith("run "), HasSubstr("-allowUntrusted")))));
}

TEST_F(InstallSequenceTest, AFailingInstallerIsRolledBackWithExactlyTheseCalls) {
  bench_.runner->replies.push_back({.code = 1, .output = "installer: The install failed."});
  bench_.guiUids = {501};
  bench_.fs->present = {"/Library/Audio/Plug-Ins/HAL/Halvo.driver",
                        "/var/db/halvo/install-rollback/1771000000/Halvo.driver"};

  EXPECT_EQ(bench_.run(), InstallResult(InstallRolledBack{"/var/log/halvo-install.log"}));

  EXPECT_THAT(
      bench_.calls(),
      ElementsAre(
          "makePrivateDir /var/db/halvo/install-staging 700",
          "stageFile /Users/ada/Halvo 2.pkg -> /var/db/halvo/install-staging/incoming.pkg",
          "run /usr/sbin/pkgutil --check-signature /var/db/halvo/install-staging/incoming.pkg",
          "log: package trusted: Developer ID Installer: Halvo Audio (QX4TRM2ZL9)",  //
          "runningSomewhereFlags",                                                   //
          "installedDriverVersion",                                                  //
          "entries /var/db/halvo/install-rollback",                                  //
          "epoch",                                                                   //
          "makeDir /var/db/halvo/install-rollback/1771000000",                       //
          "exists /Library/Audio/Plug-Ins/HAL/Halvo.driver",
          "copyTree /Library/Audio/Plug-Ins/HAL/Halvo.driver -> /var/db/halvo/install-rollback/1771000000/Halvo.driver",
          "exists /Library/PrivilegedHelperTools/halvo-broker",    //
          "exists /Library/LaunchDaemons/com.halvo.broker.plist",  //
          "exists /Library/LaunchAgents/com.halvo.daemon.plist",   //
          "run /usr/sbin/installer -pkg /var/db/halvo/install-staging/incoming.pkg -target /",
          "log: installer failed; rolling back from /var/db/halvo/install-rollback/1771000000",
          "exists /var/db/halvo/install-rollback/1771000000/Halvo.driver",
          "copyTree /var/db/halvo/install-rollback/1771000000/Halvo.driver -> /Library/Audio/Plug-Ins/HAL/Halvo.driver",
          "exists /var/db/halvo/install-rollback/1771000000/halvo-broker",
          "exists /var/db/halvo/install-rollback/1771000000/com.halvo.broker.plist",
          "exists /var/db/halvo/install-rollback/1771000000/com.halvo.daemon.plist",
          "run /bin/launchctl bootout system/com.halvo.broker",
          "run /bin/launchctl bootstrap system /Library/LaunchDaemons/com.halvo.broker.plist",
          "removeTree /var/db/halvo/install-staging"));
}

TEST_F(InstallSequenceTest, AcceptedInterruptionNeverAsksForAudio) {
  bench_.audio->flags = {true};

  EXPECT_EQ(bench_.run(true), kOk);

  EXPECT_THAT(bench_.calls(), Not(Contains("runningSomewhereFlags")));
}

TEST_F(InstallSequenceTest, AudioThatCannotBeAskedCountsAsSilent) {
  bench_.audio->flags = {};

  EXPECT_EQ(bench_.run(), kOk);

  EXPECT_THAT(bench_.calls(), Contains("runningSomewhereFlags").Times(1));
}

TEST_F(InstallSequenceTest, WithNothingInstalledAnyVersionInstalls) {
  bench_.manifest = "no manifest";
  bench_.installedVersions = {std::nullopt};

  EXPECT_EQ(bench_.run(), kOk);

  EXPECT_THAT(bench_.calls(), Contains("installedDriverVersion").Times(1));
}

TEST_F(InstallSequenceTest, TheSameVersionInstallsAgain) {
  bench_.installedVersions = {"2.0"};

  EXPECT_EQ(bench_.run(), kOk);
}

TEST_F(InstallSequenceTest, WithNobodyLoggedInOnlyTheAudioDaemonIsReported) {
  EXPECT_EQ(bench_.run(), kOk);

  EXPECT_THAT(bench_.calls(), Contains(StartsWith("log: ")).Times(2));
  EXPECT_THAT(bench_.calls(), Contains("log: coreaudiod restart rc=0"));
}

TEST_F(InstallSequenceTest, FailingRestartsAreReportedAndChangeNothing) {
  bench_.runner->replies.insert(bench_.runner->replies.end(),
                                {ProcessResult{.code = 0, .output = ""},                      // installer
                                 ProcessResult{.code = 3, .output = ""},                      // broker out
                                 ProcessResult{.code = 5, .output = ""},                      // broker in
                                 ProcessResult{.code = 1, .output = ""},                      // audio daemon
                                 ProcessResult{.code = -1, .output = "spawn failed: no"},     // agent of 501
                                 ProcessResult{.code = 125, .output = "domain not found"}});  // agent of 502
  bench_.guiUids = {501, 502};

  EXPECT_EQ(bench_.run(), kOk);

  EXPECT_THAT(bench_.calls(), Contains("log: coreaudiod restart rc=1"));
  EXPECT_THAT(bench_.calls(), Contains("log: daemon bootstrap gui/501 rc=-1"));
  EXPECT_THAT(bench_.calls(), Contains("log: daemon bootstrap gui/502 rc=125"));
}

TEST_F(InstallSequenceTest, AnInstallerThatCannotBeStartedIsRolledBackToo) {
  bench_.runner->replies.push_back({.code = -1, .output = "spawn failed: No such file or directory"});

  EXPECT_EQ(bench_.run(), InstallResult(InstallRolledBack{"/var/log/halvo-install.log"}));

  EXPECT_THAT(bench_.calls(), Contains("log: installer failed; rolling back from "
                                       "/var/db/halvo/install-rollback/1771000000"));
}

TEST_F(InstallSequenceTest, AFailingBrokerRestartDoesNotChangeARollback) {
  bench_.runner->replies.insert(bench_.runner->replies.end(), {ProcessResult{.code = 1, .output = ""},    // installer
                                                               ProcessResult{.code = 3, .output = ""},    // broker out
                                                               ProcessResult{.code = 5, .output = ""}});  // broker in

  EXPECT_EQ(bench_.run(), InstallResult(InstallRolledBack{"/var/log/halvo-install.log"}));
}

TEST_F(InstallSequenceTest, PartsThatAreNotInstalledAreNotSaved) {
  bench_.fs->present = {};

  EXPECT_EQ(bench_.run(), kOk);

  EXPECT_THAT(bench_.calls(), Not(Contains(StartsWith("copyTree "))));
}

TEST_F(InstallSequenceTest, ItsOwnDirectoriesTeamAndClockAreThoseGiven) {
  InstallSequence sequence = bench_.sequence();
  sequence.stagingRoot = "/stage here";
  sequence.rollbackRoot = "/keep";
  sequence.teamID = "ABCDEFGHIJ";
  sequence.epoch = [] { return std::int64_t{-7}; };

  EXPECT_EQ(sequence.run(false), InstallResult(InstallUntrustedPackage{HalvoPkgDistrust::wrongTeam}));
  sequence.teamID = "QX4TRM2ZL9";
  bench_.runner->replies = InstallBench().runner->replies;
  EXPECT_EQ(sequence.run(false), kOk);

  EXPECT_THAT(bench_.calls(), Contains("makePrivateDir /stage here 700"));
  EXPECT_THAT(bench_.calls(), Contains("run /usr/sbin/installer -pkg /stage here/incoming.pkg -target /"));
  EXPECT_THAT(bench_.calls(), Contains("entries /keep"));
  EXPECT_THAT(bench_.calls(), Contains("makeDir /keep/-7"));
  EXPECT_THAT(bench_.calls(), Contains("removeTree /stage here").Times(2));
}

TEST_F(InstallSequenceTest, ByDefaultNobodyIsLoggedInAndTheClockIsTheWallClock) {
  const InstallSequence defaults{.fs = bench_.fs,
                                 .launchctl = Launchctl(bench_.runner),
                                 .installer = Installer(bench_.runner),
                                 .verifier = PkgVerifier(bench_.runner),
                                 .teamID = "",
                                 .audio = AudioActivity(bench_.audio),
                                 .installedDriverVersion = {},
                                 .pkgPath = "",
                                 .manifestJSON = "",
                                 .logPath = "",
                                 .log = {}};

  const std::int64_t before = wallClockSeconds();
  const std::int64_t now = defaults.epoch();
  const std::int64_t after = wallClockSeconds();

  EXPECT_THAT(now, AllOf(Ge(before), Le(after)));
  EXPECT_TRUE(defaults.activeGuiUids().empty());
  EXPECT_EQ(defaults.rollbackRoot, "/var/db/halvo/install-rollback");
  EXPECT_EQ(defaults.stagingRoot, "/var/db/halvo/install-staging");
}

}  // namespace
}  // namespace halvo
