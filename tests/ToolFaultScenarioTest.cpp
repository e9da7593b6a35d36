// System tools that fail, or never end, under the real helper.
#include <csignal>
#include <filesystem>

#include "tests/RemovalScenario.h"

namespace halvo::sim {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kRemovedReply = R"({"code":"ok","gui_app_path":"/Applications/Halvo.app"})";
constexpr const char* kUninstallLog = "/var/log/halvo-uninstall.log";

class ToolFaultScenario : public RemovalScenario {
 protected:
  void fault(const std::string& tool, const std::string& lines) { mac().writeState("faults/" + tool, lines); }

  bool brokerRuns() {
    const auto broker = machine.job("system", "com.halvo.broker");
    return broker && broker->pid;
  }
};

TEST_F(ToolFaultScenario, ABrokerThatIsBootedOutAndNotBackIsNoReasonToFailAnInstall) {
  installed();
  ASSERT_TRUE(waitUntil([&] { return brokerRuns(); }));
  fault("launchctl", "5 on bootstrap call 3\n");

  EXPECT_EQ(reply(ProductMachine::install(machine.package({.name = "next", .version = "1.3.0"}))), kInstalledReply);

  EXPECT_FALSE(machine.job("system", "com.halvo.broker").has_value());
  EXPECT_THAT(toolRuns(),
              Contains("/bin/launchctl bootstrap system /Library/LaunchDaemons/com.halvo.broker.plist -> 5"));
}

TEST_F(ToolFaultScenario, ABrokerThatCannotBeBootedOutKeepsRunning) {
  installed();
  ASSERT_TRUE(waitUntil([&] { return brokerRuns(); }));
  const auto old = machine.job("system", "com.halvo.broker")->pid;
  fault("launchctl", "36 on bootout\n");

  EXPECT_EQ(reply(ProductMachine::install(machine.package({.name = "next", .version = "1.3.0"}))), kInstalledReply);

  EXPECT_EQ(machine.job("system", "com.halvo.broker")->pid, old);
  EXPECT_THAT(toolRuns(),
              Contains("/bin/launchctl bootstrap system /Library/LaunchDaemons/com.halvo.broker.plist -> 5"));
}

TEST_F(ToolFaultScenario, AnAgentThatCannotBeLoadedIsLoggedWithItsStatus) {
  start();
  fault("launchctl", "5 on bootstrap call 2\n");

  EXPECT_EQ(reply(ProductMachine::install(machine.package({}))), kInstalledReply);

  EXPECT_EQ(messagesIn(kInstallLog).back(), "daemon bootstrap gui/501 rc=5");
  EXPECT_FALSE(machine.job("gui/501", "com.halvo.daemon").has_value());
}

TEST_F(ToolFaultScenario, AnAudioDaemonThatCannotBeRestartedIsLoggedAndTheInstallGoesOn) {
  start();
  fault("killall", "1\n");

  EXPECT_EQ(reply(ProductMachine::install(machine.package({}))), kInstalledReply);

  EXPECT_THAT(messagesIn(kInstallLog),
              ElementsAre(HasSubstr("package trusted"), "coreaudiod restart rc=1", "daemon bootstrap gui/501 rc=0"));
}

TEST_F(ToolFaultScenario, WithoutAListOfAccountsNoAgentIsLoaded) {
  start();
  fault("dscl", "9\n");

  EXPECT_EQ(reply({"users"}), R"({"uids":[]})");
  EXPECT_EQ(reply(ProductMachine::install(machine.package({}))), kInstalledReply);

  EXPECT_FALSE(machine.job("gui/501", "com.halvo.daemon").has_value());
}

TEST_F(ToolFaultScenario, AStatusAfterAListOfAccountsDoesNotCount) {
  start();
  fault("dscl", "9 after\n");

  EXPECT_EQ(reply({"users"}), R"({"uids":[501]})");
}

TEST_F(ToolFaultScenario, ASilentPackageToolMakesThePackageUnreadable) {
  start();
  fault("pkgutil", "0 on --check-signature\n");

  EXPECT_EQ(reply(ProductMachine::install(machine.package({}))),
            R"({"code":"untrusted_package","reason":"unreadable"})");

  EXPECT_EQ(messagesIn(kInstallLog).back(), "REFUSED untrusted package (unreadable): pkgutil rc=0, no output");
  EXPECT_THAT(machine.components(), IsEmpty());
}

TEST_F(ToolFaultScenario, AReportCountsWhateverThePackageToolsStatus) {
  start();
  fault("pkgutil", "1 after on --check-signature\n");

  EXPECT_EQ(reply(ProductMachine::install(machine.package({}))), kInstalledReply);
}

TEST_F(ToolFaultScenario, AnInstallerThatWritesEverythingAndFailsIsRolledBack) {
  installed();
  const TreeSnapshot before = machine.components();
  fault("installer", "1 after\n");

  EXPECT_EQ(reply(ProductMachine::install(machine.package({.name = "next", .version = "1.3.0"}))),
            R"({"code":"rolled_back","log_path":"/var/log/halvo-install.log"})");

  EXPECT_THAT(changesBetween(before, machine.components()), IsEmpty());
}

TEST_F(ToolFaultScenario, ABrokerThatIsNotBackAfterARollbackLeavesTheReplyAsItIs) {
  installed();
  const TreeSnapshot before = machine.components();
  fault("installer", "1 after\n");
  fault("launchctl", "5 on bootstrap\n");

  EXPECT_EQ(reply(ProductMachine::install(machine.package({.name = "next", .version = "1.3.0"}))),
            R"({"code":"rolled_back","log_path":"/var/log/halvo-install.log"})");

  EXPECT_THAT(changesBetween(before, machine.components()), IsEmpty());
  EXPECT_FALSE(machine.job("system", "com.halvo.broker").has_value());
}

TEST_F(ToolFaultScenario, ARemovalGoesOnWhateverItsToolsAnswer) {
  installed();
  fault("launchctl", "3 on bootout\n");
  fault("killall", "1\n");
  fault("pkgutil", "1 on --forget\n");

  EXPECT_EQ(reply({"prepare-removal"}), kRemovedReply);

  EXPECT_THAT(machine.components(), IsEmpty());
  EXPECT_THAT(messagesIn(kUninstallLog), ElementsAre("coreaudiod restart rc=1"));
}

TEST_F(ToolFaultScenario, AToolThatNeverEndsHoldsItsRequestAndNoOther) {
  start();
  fault("pkgutil", "hang on --check-signature\n");
  const auto install = machine.appAsync(ProductMachine::install(machine.package({})));
  ASSERT_TRUE(waitUntil([&] { return !toolRuns().empty(); }));

  EXPECT_EQ(reply({"ping"}), kPingReply);
  EXPECT_EQ(reply({"users"}), R"({"uids":[501]})");

  EXPECT_EQ(install.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
}

TEST_F(ToolFaultScenario, AHelperWhoseToolHangsIsNotIdle) {
  mac().writeState("clock-rate", "200\n");
  start();
  fault("pkgutil", "hang on --check-signature\n");
  const auto install = machine.appAsync(ProductMachine::install(machine.package({})));
  ASSERT_TRUE(waitUntil([&] { return !toolRuns().empty(); }));
  const auto process = machine.helperProcess();

  // Five minutes of the machine's time.
  EXPECT_FALSE(waitUntil([&] { return machine.helperProcess() != process; }, std::chrono::milliseconds(1'500)));

  EXPECT_THAT(helperLog(), Not(Contains(HasSubstr("idle for"))));
}

TEST_F(ToolFaultScenario, TheHelperEndsItselfWhenLaunchdDoesNot) {
  start();
  fault("launchctl", "36 on bootout\n");

  EXPECT_EQ(reply({"finalize"}), "true");

  EXPECT_TRUE(waitUntil([&] { return !machine.helperProcess(); }));
  EXPECT_THAT(helperLog(), Contains("halvo-helper: bootout returned 36, exiting"));
}

}  // namespace
}  // namespace halvo::sim
