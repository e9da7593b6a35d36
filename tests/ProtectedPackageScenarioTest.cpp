// A package in a folder that a Mac keeps from root daemons.
#include <filesystem>

#include "tests/Scenario.h"

namespace halvo::sim {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;

class ProtectedPackageScenario : public Scenario {
 protected:
  // The user's folder for temporary files, which is nobody else's.
  std::string temporary() { return "/var/folders/" + std::to_string(machine.user()) + "/T"; }

  // The folders that the application's program made and did not remove.
  std::vector<std::string> copiesLeft() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(mac().path("/private" + temporary()))) {
      const std::string name = entry.path().filename().string();
      if (name.starts_with("halvo-app.")) names.push_back(name);
    }
    return names;
  }

  // What an install that was killed leaves, and the next one stumbles over once.
  void leaveAStagedPackage() { mac().writeFile("/private/var/db/halvo/install-staging/incoming.pkg", "half"); }
};

TEST_F(ProtectedPackageScenario, IsInstalledFromACopyThatIsGoneAfterwards) {
  start();

  EXPECT_EQ(reply(ProductMachine::install(machine.package({}))), kInstalledReply);

  EXPECT_THAT(copiesLeft(), IsEmpty());
}

TEST_F(ProtectedPackageScenario, ThatIsRefusedLeavesNoCopyEither) {
  leaveAStagedPackage();
  start();

  EXPECT_EQ(reply(ProductMachine::install(machine.package({}))), kStagingFailedReply);

  EXPECT_THAT(messagesIn(kInstallLog), ElementsAre(MatchesRegex("REFUSED: could not stage " + temporary() +
                                                                "/halvo-app\\.[A-Za-z0-9]{6}/Halvo\\.pkg "
                                                                "-> /var/db/halvo/install-staging/incoming\\.pkg")));
  EXPECT_THAT(copiesLeft(), IsEmpty());
}

TEST_F(ProtectedPackageScenario, InAnotherFolderIsInstalledFromThere) {
  leaveAStagedPackage();
  PackageFiles package = machine.package({});
  std::filesystem::rename(mac().path(package.path), mac().path("/Users/user501/Halvo.pkg"));
  package.path = "/Users/user501/Halvo.pkg";
  start();

  machine.app(ProductMachine::install(package));

  EXPECT_THAT(messagesIn(kInstallLog), ElementsAre("REFUSED: could not stage /Users/user501/Halvo.pkg -> "
                                                   "/var/db/halvo/install-staging/incoming.pkg"));
}

TEST_F(ProtectedPackageScenario, LeavesNoCopyWhenTheProgramIsInterrupted) {
  start();
  const PackageFiles package = machine.package({.extra = {"--postinstall", waitingScript(mac())}});
  auto interrupted = mac().runAsync(
      machine.user(),
      {"/bin/sh", "-c",
       std::string(ProductMachine::kAppProgram) + " install " + package.path + " --manifest " + package.manifest +
           " & while [ ! -e /private/tmp/interrupt ]; do sleep 0.02; done; " + "kill -INT $!; wait $!"});
  ASSERT_TRUE(waitUntil([&] { return !mac().readState("power-assertions").empty(); }));
  EXPECT_EQ(copiesLeft().size(), 1U);

  mac().writeFile("/private/tmp/interrupt", "");

  EXPECT_EQ(interrupted.get().status, 130);
  EXPECT_THAT(copiesLeft(), IsEmpty());
  letItGo(mac());
}

// What the helper answers when the package itself, and no copy of it, is handed over.
class PackageHandedOver : public ProtectedPackageScenario {
 protected:
  std::string handOver(const std::string& folder) {
    std::filesystem::create_directories(mac().path(folder));
    start();
    return reply(ProductMachine::install(machine.package({.folder = folder}), {"--without-checks"}));
  }
};

TEST_F(PackageHandedOver, IsInstalledByAHelperWithFullDiskAccess) {
  mac().writeState("full-disk-access", "/Applications/Halvo.app/Contents/MacOS/halvo-helper\n");

  EXPECT_EQ(handOver("/Users/user501/Downloads"), kInstalledReply);
}

TEST_F(PackageHandedOver, IsRefusedWhereAnotherProgramHasFullDiskAccess) {
  mac().writeState("full-disk-access", "/Library/PrivilegedHelperTools/halvo-broker\n");

  EXPECT_EQ(handOver("/Users/user501/Downloads"), kStagingFailedReply);
}

class PackageInFolder : public PackageHandedOver, public testing::WithParamInterface<const char*> {};

TEST_P(PackageInFolder, IsRefusedAndNotTakenIn) {
  const std::string folder = std::string("/Users/user501/") + GetParam();

  EXPECT_EQ(handOver(folder), kStagingFailedReply);

  EXPECT_THAT(messagesIn(kInstallLog), ElementsAre("REFUSED: could not stage " + folder +
                                                   "/Halvo.pkg -> /var/db/halvo/install-staging/incoming.pkg"));
  EXPECT_FALSE(std::filesystem::exists(mac().path("/var/db/halvo/install-staging")));
  EXPECT_THAT(toolRuns(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Table, PackageInFolder, testing::Values("Downloads", "Desktop", "Documents"),
                         [](const auto& row) { return std::string(row.param); });

// An agent that prints what lies in the user's downloads.
constexpr const char* kReader = R"(<plist version="1.0"><dict>
  <key>Label</key><string>com.example.reader</string>
  <key>ProgramArguments</key>
  <array><string>/bin/cat</string><string>/Users/user501/Downloads/Halvo.app/Contents/MacOS/halvo-daemon</string></array>
  <key>RunAtLoad</key><true/>
</dict></plist>)";

// Beside packages.
class ProtectedFolderScenario : public Scenario {
 protected:
  static constexpr const char* kMarker = "/Users/user501/Downloads/Halvo.app/Contents/MacOS/halvo-daemon";

  ProtectedFolderScenario() { mac().writeFile(kMarker, "marker"); }
};

TEST_F(ProtectedFolderScenario, KeepsAnApplicationFromBeingRemoved) {
  start();

  EXPECT_EQ(reply({"remove-bundle", "/Users/user501/Downloads/Halvo.app"}), "false");

  EXPECT_EQ(mac().readFile(kMarker), "marker");
  EXPECT_THAT(helperLog(),
              Contains("halvo-helper: refused to remove non-Halvo path /Users/user501/Downloads/Halvo.app"));
}

TEST_F(ProtectedFolderScenario, HoldsNoClientWhoseCodeTheHelperMayRead) {
  start();
  const std::string inHome =
      machine.signedCopy(mac().path(ProductMachine::kAppProgram), "halvo-app", "com.halvo.app", "QX4TRM2ZL9");
  ASSERT_EQ(mac().run(machine.user(), {inHome, "ping"}).status, 0);
  std::filesystem::rename(mac().path(inHome), mac().path(ProductMachine::kDownloads) / "halvo-app");

  EXPECT_NE(mac().run(machine.user(), {"/Users/user501/Downloads/halvo-app", "ping"}).status, 0);

  EXPECT_THAT(helperLog(), Contains(StartsWith("halvo-helper: rejected unauthorized client pid=")));
}

TEST_F(ProtectedFolderScenario, IsOpenToTheUsersOwnAgents) {
  mac().writeFile("/Library/LaunchAgents/com.example.reader.plist", kReader);
  start();

  EXPECT_TRUE(waitUntil([&] { return mac().readState("job-output/com.example.reader.log") == "marker"; }));
}

}  // namespace
}  // namespace halvo::sim
