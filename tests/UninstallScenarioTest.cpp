// The product's parts leave.
#include "tests/RemovalScenario.h"

namespace halvo::sim {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kRemovedReply = R"({"code":"ok","gui_app_path":"/Applications/Halvo.app"})";
constexpr const char* kIncompleteReply = R"({"code":"incomplete","log_path":"/var/log/halvo-uninstall.log"})";
constexpr const char* kUninstallLog = "/var/log/halvo-uninstall.log";

using UninstallScenario = RemovalScenario;

TEST_F(UninstallScenario, RunsExactlyTheseToolsInThisOrder) {
  installed();
  const std::size_t before = toolRuns().size();

  EXPECT_EQ(reply({"prepare-removal"}), kRemovedReply);

  EXPECT_THAT(toolRunsSince(before),
              ElementsAre("/usr/bin/dscl . -list /Users UniqueID -> 0", "/bin/launchctl print gui/501 -> 0",
                          "/bin/launchctl print gui/502 -> 112", "/bin/launchctl bootout gui/501/com.halvo.daemon -> 0",
                          "/usr/bin/killall coreaudiod -> 0", "/bin/launchctl bootout system/com.halvo.broker -> 0",
                          "/usr/sbin/pkgutil --forget com.halvo.pkg -> 0"));
}

TEST_F(UninstallScenario, LeavesNothingOfThePartsTheirJobsOrTheirReceipt) {
  installed();

  machine.app({"prepare-removal"});

  EXPECT_THAT(machine.components(), IsEmpty());
  EXPECT_FALSE(machine.job("system", "com.halvo.broker").has_value());
  EXPECT_FALSE(machine.job("gui/501", "com.halvo.daemon").has_value());
  EXPECT_FALSE(stands("/var/db/halvo"));
  EXPECT_FALSE(stands("/private/var/run/halvo"));
  EXPECT_EQ(mac().run(0, {"/usr/sbin/pkgutil", "--pkgs"}).out, "");
  EXPECT_THAT(messagesIn(kUninstallLog), ElementsAre("coreaudiod restart rc=0"));
}

TEST_F(UninstallScenario, TakesTheAgentFromEveryGraphicalSession) {
  mac().writeState("gui-sessions", "501\n502\n");
  installed();
  ASSERT_TRUE(machine.job("gui/502", "com.halvo.daemon").has_value());

  machine.app({"prepare-removal"});

  EXPECT_FALSE(machine.job("gui/501", "com.halvo.daemon").has_value());
  EXPECT_FALSE(machine.job("gui/502", "com.halvo.daemon").has_value());
}

TEST_F(UninstallScenario, AReinstallBringsTheAgentsBack) {
  mac().writeState("gui-sessions", "501\n502\n");
  installed();
  machine.app({"prepare-removal"});

  EXPECT_EQ(reply(ProductMachine::install(machine.package({.name = "again"}))), kInstalledReply);

  EXPECT_TRUE(machine.job("gui/501", "com.halvo.daemon").has_value());
  EXPECT_TRUE(machine.job("gui/502", "com.halvo.daemon").has_value());
}

TEST_F(UninstallScenario, OfAMachineWithoutTheProductIsOk) {
  start();

  EXPECT_EQ(reply({"prepare-removal"}), kRemovedReply);
}

TEST_F(UninstallScenario, TwiceIsOkTwice) {
  installed();

  EXPECT_EQ(reply({"prepare-removal"}), kRemovedReply);
  EXPECT_EQ(reply({"prepare-removal"}), kRemovedReply);
}

TEST_F(UninstallScenario, AudioThatRunsRefusesItAndChangesNothing) {
  installed();
  mac().writeState("audio-devices", "1\n");
  const TreeSnapshot before = machine.components();
  const std::size_t toolsBefore = toolRuns().size();

  EXPECT_EQ(reply({"prepare-removal"}), R"({"code":"audio_active"})");

  EXPECT_THAT(changesBetween(before, machine.components()), IsEmpty());
  EXPECT_THAT(toolRunsSince(toolsBefore), IsEmpty());
  EXPECT_FALSE(stands(kUninstallLog));
}

TEST_F(UninstallScenario, AudioThatRunsIsInterruptedWhenThatIsAccepted) {
  installed();
  mac().writeState("audio-devices", "1\n");

  EXPECT_EQ(reply({"prepare-removal", "--accept-audio-interruption"}), kRemovedReply);
}

TEST_F(UninstallScenario, ALeftoverIsReportedAndNamedInTheLog) {
  installed();
  // A folder where the broker's program should be cannot be unlinked.
  std::filesystem::remove(mac().path("/Library/PrivilegedHelperTools/halvo-broker"));
  std::filesystem::create_directory(mac().path("/Library/PrivilegedHelperTools/halvo-broker"));

  EXPECT_EQ(reply({"prepare-removal"}), kIncompleteReply);

  EXPECT_THAT(messagesIn(kUninstallLog),
              ElementsAre("coreaudiod restart rc=0",
                          "uninstall incomplete; leftover: /Library/PrivilegedHelperTools/halvo-broker"));
  EXPECT_FALSE(stands("/var/db/halvo"));
}

TEST_F(UninstallScenario, WithoutAGrantNothingRuns) {
  installed();
  const std::size_t before = toolRuns().size();

  EXPECT_EQ(reply({"prepare-removal", "--without-grant"}), kUnauthorizedReply);
  EXPECT_EQ(reply({"legacy", "prepare-removal"}), kUnauthorizedReply);

  EXPECT_THAT(toolRunsSince(before), IsEmpty());
  EXPECT_THAT(machine.components(), testing::Not(IsEmpty()));
}

}  // namespace
}  // namespace halvo::sim
