// What earlier runs and other programs left on the machine, and the installs that come after.
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <thread>

#include "tests/Scenario.h"

namespace halvo::sim {
namespace {

using testing::Contains;
using testing::StartsWith;

constexpr const char* kStagedPackage = "/var/db/halvo/install-staging/incoming.pkg";
constexpr const char* kSnapshots = "/var/db/halvo/install-rollback";
constexpr const char* kAgentPlist = "/Library/LaunchAgents/com.halvo.daemon.plist";

class RecoveryScenario : public Scenario {
 protected:
  RecoveryScenario() { start(); }

  std::string installReply(const PackageFiles& package) { return reply(ProductMachine::install(package)); }

  bool stands(const std::string& path) { return std::filesystem::exists(mac().path(path)); }

  void killHelper() { mac().run(0, {"/bin/sh", "-c", "kill -9 " + std::to_string(*machine.helperProcess())}); }
};

TEST_F(RecoveryScenario, AStagedPackageThatWasLeftFailsOneInstallAndNotTheNext) {
  const PackageFiles package = machine.package({});
  mac().writeFile(kStagedPackage, "of a run that was cut off");

  const CommandResult first = machine.app(ProductMachine::install(package));

  EXPECT_EQ(first.out, std::string(kStagingFailedReply) + "\n");
  EXPECT_EQ(
      first.err,
      "halvo-app: An install that was broken off had left its copy of a package behind, which this attempt removed. "
      "Nothing else was changed. Try again.\n");
  EXPECT_EQ(installReply(package), kInstalledReply);
}

TEST_F(RecoveryScenario, AHelperKilledDuringAnInstallFailsOneInstallAndNotTheNext) {
  const PackageFiles package = machine.package({.name = "later"});
  auto cutOff = machine.appAsync(
      ProductMachine::install(machine.package({.name = "slow", .extra = {"--postinstall", waitingScript(mac())}})));
  ASSERT_TRUE(waitUntil([&] { return stands(kAgentPlist); }));

  killHelper();

  EXPECT_EQ(cutOff.get().out, "");
  EXPECT_TRUE(stands(kStagedPackage));
  letItGo(mac());
  EXPECT_EQ(installReply(package), kStagingFailedReply);
  EXPECT_FALSE(stands(kStagedPackage));
  EXPECT_EQ(installReply(package), kInstalledReply);
}

TEST_F(RecoveryScenario, AFifoAtTheLogsPathHoldsNoInstall) {
  ASSERT_EQ(::mkfifo((mac().path("/var/log") / "halvo-install.log").c_str(), 0644), 0);

  EXPECT_EQ(installReply(machine.package({})), kInstalledReply);

  EXPECT_THAT(helperLog(), Contains(StartsWith("halvo-helper: package trusted: ")));
}

TEST_F(RecoveryScenario, ALinkToNowhereAtTheLogsPathIsReplacedByTheLog) {
  std::filesystem::create_symlink("/Library/planted", mac().path("/var/log") / "halvo-install.log");

  installReply(machine.package({}));

  EXPECT_THAT(messagesIn(kInstallLog), Contains(StartsWith("package trusted: ")));
  EXPECT_FALSE(stands("/Library/planted"));
}

TEST_F(RecoveryScenario, AFifoInPlaceOfTheDriversPropertyListHoldsNoInstall) {
  const std::filesystem::path contents = mac().path("/Library/Audio/Plug-Ins/HAL") / "Halvo.driver/Contents";
  std::filesystem::create_directories(contents);
  ASSERT_EQ(::mkfifo((contents / "Info.plist").c_str(), 0644), 0);

  EXPECT_EQ(installReply(machine.package({})), kInstalledReply);
}

// Snapshots are named by the second.
class SameSecondScenario : public RecoveryScenario {
 protected:
  std::ptrdiff_t snapshots() { return std::distance(std::filesystem::directory_iterator(mac().path(kSnapshots)), {}); }

  static void waitForTheNextSecond() {
    using std::chrono::system_clock;
    std::this_thread::sleep_until(std::chrono::ceil<std::chrono::seconds>(system_clock::now()));
  }

  // Installs, takes the agent's property list away, and lets another install fail. Answers whether both began in the
  // same second.
  bool installLoseAPartAndFail() {
    mac().writeState("faults/installer", "");
    machine.app(ProductMachine::install(package_));
    waitForTheNextSecond();
    const std::ptrdiff_t before = snapshots();
    machine.app(ProductMachine::install(package_));
    std::filesystem::remove(mac().path(kAgentPlist));
    mac().writeState("faults/installer", "1\n");
    machine.app(ProductMachine::install(package_));
    return snapshots() == before + 1;
  }

 private:
  const PackageFiles package_ = machine.package({});
};

TEST_F(SameSecondScenario, APartThatWentBetweenTwoInstallsOfOneSecondComesBackFromTheirSnapshot) {
  ASSERT_TRUE(waitUntil([&] { return installLoseAPartAndFail(); }));

  EXPECT_TRUE(stands(kAgentPlist));
}

}  // namespace
}  // namespace halvo::sim
