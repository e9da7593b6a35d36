// A package in a folder that a Mac keeps from root daemons.
#include <filesystem>

#include "tests/Scenario.h"

namespace halvo::sim {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

class ProtectedPackageScenario : public Scenario {
 protected:
  // The folders that the application's program made and did not remove.
  std::vector<std::string> copiesLeft() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(mac().path("/private/var/folders/501/T"))) {
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

  EXPECT_THAT(
      messagesIn(kInstallLog),
      ElementsAre(MatchesRegex("REFUSED: could not stage /var/folders/501/T/halvo-app\\.[A-Za-z0-9]{6}/Halvo\\.pkg "
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

}  // namespace
}  // namespace halvo::sim
