#include "main/OperationWiring.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "HalvoHelper/testing/SignatureReports.h"
#include "main/WiringBench.h"

namespace halvo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;

class OperationWiringTest : public WiringBench {};

TEST(OperationFilesTest, AreThoseThatSupportAsksForAndTheInstalledDriversOwn) {
  EXPECT_EQ(OperationFiles().installLog, "/var/log/halvo-install.log");
  EXPECT_EQ(OperationFiles().uninstallLog, "/var/log/halvo-uninstall.log");
  EXPECT_EQ(OperationFiles().driverPlist, "/Library/Audio/Plug-Ins/HAL/Halvo.driver/Contents/Info.plist");
}

// Authorization.

TEST_F(OperationWiringTest, AsksTheAuthorizerWhenTheRightIsSound) {
  EXPECT_TRUE(wiring()->authorizeAdmin(kBlob));

  EXPECT_THAT(authorizer_->seen, ElementsAre(kBlob));
}

TEST_F(OperationWiringTest, PassesTheRefusalOfTheAuthorizerOn) {
  authorizer_->answer = false;

  EXPECT_FALSE(wiring()->authorizeAdmin(kBlob));
}

TEST_F(OperationWiringTest, RefusesWithoutAskingWhenTheRightIsUnsound) {
  EXPECT_FALSE(wiring(false)->authorizeAdmin(kBlob));
  EXPECT_FALSE(wiring(false)->authorizeAdmin(AuthorizationBlob()));

  EXPECT_THAT(authorizer_->seen, IsEmpty());
}

// Installing.

TEST_F(OperationWiringTest, InstallsFromTheFixedPlacesInOrder) {
  runner_->replies = {{0, std::string(kGoodSignatureReport)}};

  const InstallResult result = wiring()->runInstall("/tmp/a.pkg", R"({"driver_version":"2.0"})", false);

  EXPECT_EQ(result, InstallResult(InstallOk{{"driver", "broker", "daemon_agent"}}));
  EXPECT_THAT(calls(), ElementsAre("makePrivateDir /var/db/halvo/install-staging 700",
                                   "stageFile /tmp/a.pkg -> /var/db/halvo/install-staging/incoming.pkg",
                                   "run /usr/sbin/pkgutil --check-signature /var/db/halvo/install-staging/incoming.pkg",
                                   "runningSomewhereFlags", "entries /var/db/halvo/install-rollback",
                                   MatchesRegex("makeDir /var/db/halvo/install-rollback/[0-9]+"),
                                   "exists /Library/Audio/Plug-Ins/HAL/Halvo.driver",
                                   "exists /Library/PrivilegedHelperTools/halvo-broker",
                                   "exists /Library/LaunchDaemons/com.halvo.broker.plist",
                                   "exists /Library/LaunchAgents/com.halvo.daemon.plist",
                                   "run /usr/sbin/installer -pkg /var/db/halvo/install-staging/incoming.pkg -target /",
                                   "run /bin/launchctl bootout system/com.halvo.broker",
                                   "run /bin/launchctl bootstrap system /Library/LaunchDaemons/com.halvo.broker.plist",
                                   "run /usr/bin/killall coreaudiod", "run /usr/bin/dscl . -list /Users UniqueID",
                                   "removeTree /var/db/halvo/install-staging"));
}

TEST_F(OperationWiringTest, StartsTheAgentOfEveryGuiUser) {
  runner_->replies = {{0, std::string(kGoodSignatureReport)}, {0, ""}, {0, ""}, {0, ""}, {0, ""},
                      {0, "root 0\nann 501\nbob 502\n"},      {0, ""}, {1, ""}};

  wiring()->runInstall("/tmp/a.pkg", "{}", true);

  EXPECT_THAT(calls(), Contains("run /bin/launchctl bootstrap gui/501 /Library/LaunchAgents/com.halvo.daemon.plist"));
  EXPECT_THAT(calls(),
              Not(Contains("run /bin/launchctl bootstrap gui/502 /Library/LaunchAgents/com.halvo.daemon.plist")));
}

TEST_F(OperationWiringTest, DemandsTheMakersTeamOfAPackage) {
  std::string report(kGoodSignatureReport);
  report.replace(report.find("QX4TRM2ZL9"), 10, "ABCDE12345");
  runner_->replies = {{0, report}};

  EXPECT_EQ(wiring()->runInstall("/tmp/a.pkg", "{}", true),
            InstallResult(InstallUntrustedPackage{HalvoPkgDistrust::wrongTeam}));
}

TEST_F(OperationWiringTest, AsksForAudioUnlessAnInterruptionWasAccepted) {
  audio_->flags = {true};
  runner_->replies = {{0, std::string(kGoodSignatureReport)}};

  EXPECT_EQ(wiring()->runInstall("/tmp/a.pkg", "{}", false), InstallResult(InstallAudioActive{}));
}

TEST_F(OperationWiringTest, InstallsOverRunningAudioWhenThatWasAccepted) {
  audio_->flags = {true};
  runner_->replies = {{0, std::string(kGoodSignatureReport)}};

  EXPECT_EQ(wiring()->runInstall("/tmp/a.pkg", "{}", true),
            InstallResult(InstallOk{{"driver", "broker", "daemon_agent"}}));
}

TEST_F(OperationWiringTest, ComparesTheVersionOfTheInstalledDriverWithThatOfTheManifest) {
  directory_.makeFile("Info.plist",
                      "<plist version=\"1.0\"><dict><key>CFBundleVersion</key><string>2.10</string></dict></plist>");
  runner_->replies = {{0, std::string(kGoodSignatureReport)}};

  EXPECT_EQ(wiring()->runInstall("/tmp/a.pkg", R"({"driver_version":"2.9"})", true),
            InstallResult(InstallDowngrade{"2.10", "2.9"}));
}

TEST_F(OperationWiringTest, TellsWhereTheLogOfAFailedInstallIs) {
  runner_->replies = {{0, std::string(kGoodSignatureReport)}, {1, "The upgrade failed."}};

  EXPECT_EQ(wiring()->runInstall("/tmp/a.pkg", "{}", true),
            InstallResult(InstallRolledBack{directory_.path("install.log")}));
}

TEST_F(OperationWiringTest, WritesProgressToTheInstallLogAndTheSystemLog) {
  fs_->failing = {"stageFile /tmp/a.pkg -> /var/db/halvo/install-staging/incoming.pkg"};

  wiring()->runInstall("/tmp/a.pkg", "{}", true);

  EXPECT_THAT(installLog(), MatchesRegex("[-0-9]+ [:0-9]+ \\+0000: REFUSED: could not stage /tmp/a.pkg -> "
                                         "/var/db/halvo/install-staging/incoming.pkg\n"));
  EXPECT_THAT(systemLog_.lines(), ElementsAre("halvo-helper: REFUSED: could not stage /tmp/a.pkg -> "
                                              "/var/db/halvo/install-staging/incoming.pkg"));
}

// Listing.

TEST_F(OperationWiringTest, ListsTheUsersWithAGuiDomain) {
  runner_->replies = {{0, "root 0\nann 501\nbob 502\n"}, {113, ""}, {0, ""}};

  EXPECT_THAT(wiring()->enumerateDomains(), ElementsAre(502));

  EXPECT_THAT(calls(), ElementsAre("run /usr/bin/dscl . -list /Users UniqueID", "run /bin/launchctl print gui/501",
                                   "run /bin/launchctl print gui/502"));
}

}  // namespace
}  // namespace halvo
