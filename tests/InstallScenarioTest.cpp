// Packages on their way into the system: installed, refused, rolled back.
#include <filesystem>

#include "tests/Scenario.h"

namespace halvo::sim {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class InstallScenario : public Scenario {
 protected:
  InstallScenario() { start(); }

  static std::string untrusted(const std::string& reason) {
    return R"({"code":"untrusted_package","reason":")" + reason + "\"}";
  }

  std::string installReply(const PackageFiles& package, const std::vector<std::string>& options = {}) {
    return reply(ProductMachine::install(package, options));
  }
};

TEST_F(InstallScenario, AGoodPackageRunsExactlyTheseToolsInThisOrder) {
  const PackageFiles package = machine.package({});

  EXPECT_EQ(installReply(package), kInstalledReply);

  EXPECT_THAT(toolRuns(),
              ElementsAre("/usr/sbin/pkgutil --check-signature /var/db/halvo/install-staging/incoming.pkg -> 0",
                          "/usr/sbin/installer -pkg /var/db/halvo/install-staging/incoming.pkg -target / -> 0",
                          "/bin/launchctl bootout system/com.halvo.broker -> 3",
                          "/bin/launchctl bootstrap system /Library/LaunchDaemons/com.halvo.broker.plist -> 0",
                          "/usr/bin/killall coreaudiod -> 0", "/usr/bin/dscl . -list /Users UniqueID -> 0",
                          "/bin/launchctl print gui/501 -> 0", "/bin/launchctl print gui/502 -> 112",
                          "/bin/launchctl bootstrap gui/501 /Library/LaunchAgents/com.halvo.daemon.plist -> 0"));
}

TEST_F(InstallScenario, AGoodPackageBringsItsPartsAndStartsThem) {
  machine.app(ProductMachine::install(machine.package({.version = "1.2.0"})));

  EXPECT_THAT(mac().readFile("/Library/Audio/Plug-Ins/HAL/Halvo.driver/Contents/Info.plist"),
              testing::HasSubstr("1.2.0"));
  EXPECT_TRUE(waitUntil([&] { return machine.job("system", "com.halvo.broker")->pid.has_value(); }));
  EXPECT_TRUE(waitUntil([&] { return machine.job("gui/501", "com.halvo.daemon")->pid.has_value(); }));
}

TEST_F(InstallScenario, AnInstallIsLoggedLineByLine) {
  machine.app(ProductMachine::install(machine.package({})));

  EXPECT_THAT(messagesIn(kInstallLog), ElementsAre("package trusted: Developer ID Installer: Halvo Audio (QX4TRM2ZL9)",
                                                   "coreaudiod restart rc=0", "daemon bootstrap gui/501 rc=0"));
  EXPECT_THAT(
      helperLog(),
      testing::IsSupersetOf({"halvo-helper: package trusted: Developer ID Installer: Halvo Audio (QX4TRM2ZL9)",
                             "halvo-helper: coreaudiod restart rc=0", "halvo-helper: daemon bootstrap gui/501 rc=0"}));
}

TEST_F(InstallScenario, WhileItRunsTheMacDoesNotFallAsleepFromIdleness) {
  auto install =
      machine.appAsync(ProductMachine::install(machine.package({.extra = {"--postinstall", waitingScript(mac())}})));
  EXPECT_TRUE(waitUntil([&] { return !mac().readState("power-assertions").empty(); }));

  const std::string held = mac().readState("power-assertions");
  letItGo(mac());
  install.get();

  EXPECT_EQ(held, std::to_string(machine.helperProcess().value()) +
                      " PreventUserIdleSystemSleep changing the Halvo audio product\n");
  EXPECT_EQ(mac().readState("power-assertions"), "");
}

TEST_F(InstallScenario, NothingOfTheStagingDirectoryIsLeftAndTheSnapshotIsKept) {
  machine.app(ProductMachine::install(machine.package({})));

  EXPECT_FALSE(std::filesystem::exists(mac().path("/var/db/halvo/install-staging")));
  EXPECT_TRUE(std::filesystem::is_directory(mac().path("/var/db/halvo/install-rollback")));
}

TEST_F(InstallScenario, BothGenerationsOfTheIntermediateAuthorityAreTrusted) {
  EXPECT_EQ(installReply(machine.package({.report = "good-g2.txt"})), kInstalledReply);
}

TEST_F(InstallScenario, TheSameVersionIsInstalledAgain) {
  const PackageFiles package = machine.package({});
  machine.app(ProductMachine::install(package));

  EXPECT_EQ(installReply(package), kInstalledReply);
}

TEST_F(InstallScenario, ANewVersionRestartsTheBroker) {
  machine.app(ProductMachine::install(machine.package({.name = "old", .version = "1.2.0"})));
  ASSERT_TRUE(waitUntil([&] { return machine.job("system", "com.halvo.broker")->pid.has_value(); }));
  const auto old = machine.job("system", "com.halvo.broker")->pid;

  machine.app(ProductMachine::install(machine.package({.name = "new", .version = "1.10.0"})));

  EXPECT_TRUE(waitUntil([&] { return machine.job("system", "com.halvo.broker")->pid.has_value(); }));
  EXPECT_NE(machine.job("system", "com.halvo.broker")->pid, old);
}

TEST_F(InstallScenario, ALowerVersionIsRefusedNamingBoth) {
  machine.app(ProductMachine::install(machine.package({.name = "new", .version = "2.1.0"})));

  EXPECT_EQ(installReply(machine.package({.name = "old", .version = "2.0.9"})),
            R"({"code":"downgrade","installed":"2.1.0","incoming":"2.0.9"})");

  EXPECT_EQ(messagesIn(kInstallLog).back(), "refusing downgrade: installed=2.1.0 incoming=2.0.9");
}

TEST_F(InstallScenario, AudioThatRunsRefusesTheInstallAndChangesNothing) {
  mac().writeState("audio-devices", "0\n1\n");
  const PackageFiles package = machine.package({});

  EXPECT_EQ(installReply(package), R"({"code":"audio_active"})");

  EXPECT_THAT(machine.components(), IsEmpty());
}

TEST_F(InstallScenario, AudioThatRunsIsInterruptedWhenThatIsAccepted) {
  mac().writeState("audio-devices", "0\n1\n");

  EXPECT_EQ(installReply(machine.package({}), {"--accept-audio-interruption"}), kInstalledReply);
}

TEST_F(InstallScenario, AnAudioDeviceThatCannotBeReadDoesNotStopAnInstall) {
  mac().writeState("audio-devices", "!\n");

  EXPECT_EQ(installReply(machine.package({})), kInstalledReply);
}

TEST_F(InstallScenario, APayloadCutShortIsRolledBackByteForByte) {
  machine.app(ProductMachine::install(machine.package({.name = "good", .version = "1.2.0"})));
  const TreeSnapshot before = machine.components();

  EXPECT_EQ(
      installReply(machine.package({.name = "cut", .version = "1.3.0", .extra = {"--truncate-payload", "60000"}})),
      R"({"code":"rolled_back","log_path":"/var/log/halvo-install.log"})");

  EXPECT_THAT(changesBetween(before, machine.components()), IsEmpty());
  EXPECT_THAT(messagesIn(kInstallLog).back(),
              testing::StartsWith("installer failed; rolling back from /var/db/halvo/"));
}

TEST_F(InstallScenario, AFailingPostinstallScriptIsRolledBackByteForByte) {
  machine.app(ProductMachine::install(machine.package({.name = "good", .version = "1.2.0"})));
  const TreeSnapshot before = machine.components();
  // Keeps what the installer had written until then, to show that there was something to roll back.
  mac().writeFile("/Users/user501/Downloads/failing",
                  "#!/bin/sh\ncp /Library/Audio/Plug-Ins/HAL/Halvo.driver/Contents/Info.plist /private/var/tmp/seen\n"
                  "exit 9\n",
                  0755);
  const std::string script = mac().path("/Users/user501/Downloads/failing").string();

  EXPECT_EQ(installReply(machine.package({.name = "bad", .version = "1.3.0", .extra = {"--postinstall", script}})),
            R"({"code":"rolled_back","log_path":"/var/log/halvo-install.log"})");

  EXPECT_THAT(mac().readFile("/private/var/tmp/seen"), testing::HasSubstr("1.3.0"));
  EXPECT_THAT(changesBetween(before, machine.components()), IsEmpty());
}

TEST_F(InstallScenario, AToolThatCannotBeRunMakesThePackageUnsigned) {
  std::filesystem::remove(mac().path("/usr/sbin") / "pkgutil");

  EXPECT_EQ(installReply(machine.package({})), untrusted("unsigned"));
}

TEST_F(InstallScenario, WithoutAGrantNothingRuns) {
  const PackageFiles package = machine.package({});

  EXPECT_EQ(installReply(package, {"--without-grant"}), kUnauthorizedReply);
  EXPECT_EQ(reply({"legacy", "install", package.path, "--manifest", package.manifest}), kUnauthorizedReply);

  EXPECT_THAT(toolRuns(), IsEmpty());
}

struct RefusedReport {
  const char* name;
  const char* report;
  const char* reason;
  const char* logLine;
};

class RefusedPackage : public Scenario, public testing::WithParamInterface<RefusedReport> {
 protected:
  void SetUp() override { start(); }
};

TEST_P(RefusedPackage, IsRefusedWithItsReasonAndChangesNothing) {
  const PackageFiles package = machine.package({.report = GetParam().report});

  EXPECT_EQ(reply(ProductMachine::install(package)),
            std::string(R"({"code":"untrusted_package","reason":")") + GetParam().reason + "\"}");

  EXPECT_THAT(messagesIn(kInstallLog), ElementsAre(testing::StartsWith(GetParam().logLine)));
  EXPECT_THAT(machine.components(), IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(mac().path("/var/db/halvo/install-staging")));
  EXPECT_FALSE(std::filesystem::exists(mac().path("/var/db/halvo/install-rollback")));
}

INSTANTIATE_TEST_SUITE_P(
    Table, RefusedPackage,
    testing::Values(
        RefusedReport{"Unsigned", "unsigned.txt", "unsigned", "REFUSED untrusted package (unsigned): status: "},
        RefusedReport{"NotNotarized", "not-notarized.txt", "not_notarized",
                      "REFUSED untrusted package (not_notarized): notarization: "},
        RefusedReport{"WrongTeam", "wrong-team.txt", "wrong_team", "REFUSED untrusted package (wrong_team): leaf: "},
        RefusedReport{"ChainTruncated", "chain-truncated.txt", "chain_truncated",
                      "REFUSED untrusted package (chain_truncated): chain has 2 certificate(s)"},
        RefusedReport{"UnknownAuthority", "unknown-authority.txt", "unknown_authority",
                      "REFUSED untrusted package (unknown_authority): intermediate: "},
        RefusedReport{"ApplicationCertificate", "application-certificate.txt", "not_developer_id",
                      "REFUSED untrusted package (not_developer_id): leaf: Developer ID Application"}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace halvo::sim
