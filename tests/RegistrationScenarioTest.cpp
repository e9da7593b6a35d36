// The helper's registration with the system, from the application's program.
#include <filesystem>
#include <fstream>

#include "sim/launchd/ControlClient.h"
#include "tests/Scenario.h"

namespace halvo::sim {
namespace {

using testing::StartsWith;

constexpr const char* kPlist = "/Applications/Halvo.app/Contents/Library/LaunchDaemons/com.halvo.helper.plist";

class RegistrationScenario : public Scenario {
 protected:
  // What an administrator does in System Settings.
  void approve() { ASSERT_EQ(ControlClient(mac().path("/sim/launchd.sock")).registerService(kPlist).status, 0); }

  // A Mac on which the helper was never registered.
  void forget() { mac().writeState("registered-services", ""); }
};

TEST_F(RegistrationScenario, OnAFreshMacItIsEnabledAndStaysSoWhenItIsMadeAgain) {
  start();

  const CommandResult status = machine.app({"status"});
  const CommandResult again = machine.app({"register"});

  EXPECT_EQ(status.status, 0);
  EXPECT_EQ(status.out, "enabled\n");
  EXPECT_EQ(again.status, 0);
  EXPECT_EQ(again.out, "enabled\n");
  EXPECT_EQ(reply({"ping"}), kPingReply);
}

TEST_F(RegistrationScenario, TakenBackNobodyAnswersUntilItIsMadeAgain) {
  start();
  machine.app({"ping"});

  EXPECT_EQ(reply({"unregister"}), "not-registered");
  EXPECT_EQ(machine.app({"status"}).status, 3);
  EXPECT_EQ(machine.app({"ping"}).status, 3);
  EXPECT_EQ(machine.app({"unregister"}).status, 0);
  ASSERT_EQ(mac().run(0, {"/bin/launchctl", "bootout", "system/com.halvo.helper"}).status, 0);

  EXPECT_EQ(reply({"register"}), "enabled");
  EXPECT_EQ(reply({"ping"}), kPingReply);
}

TEST_F(RegistrationScenario, AnAdministratorHasToApproveItBeforeAnybodyAnswers) {
  forget();
  mac().writeState("background-approval", "ask\n");
  start();
  EXPECT_EQ(reply({"status"}), "not-registered");

  const CommandResult registered = machine.app({"register"});

  EXPECT_EQ(registered.status, 2);
  EXPECT_EQ(registered.out, "requires-approval\n");
  EXPECT_THAT(registered.err, StartsWith("halvo-app: The helper is registered and needs approval in System Settings."));
  EXPECT_EQ(machine.app({"status"}).status, 2);
  EXPECT_EQ(machine.app({"ping"}).status, 3);

  approve();
  EXPECT_EQ(reply({"status"}), "enabled");
  EXPECT_EQ(reply({"ping"}), kPingReply);
}

TEST_F(RegistrationScenario, OneThatWaitsForApprovalCanBeTakenBack) {
  forget();
  mac().writeState("background-approval", "ask\n");
  start();
  machine.app({"register"});

  EXPECT_EQ(reply({"unregister"}), "not-registered");

  EXPECT_EQ(mac().readState("unapproved-services"), "");
}

TEST_F(RegistrationScenario, SystemSettingsOpenOnRequest) {
  start();

  machine.app({"status"});
  EXPECT_EQ(mac().readState("opened-settings"), "");

  machine.app({"status", "--open-settings"});
  EXPECT_EQ(mac().readState("opened-settings"), "Login Items\n");
}

TEST_F(RegistrationScenario, AnApplicationWithoutThePropertyListFindsNoHelper) {
  forget();
  std::filesystem::remove(mac().path(kPlist));
  start();

  const CommandResult status = machine.app({"status"});
  const CommandResult registered = machine.app({"register"});

  EXPECT_EQ(status.out, "not-found\n");
  EXPECT_EQ(status.status, 3);
  EXPECT_EQ(registered.status, 1);
  EXPECT_THAT(registered.err, StartsWith("halvo-app: The system did not register the helper ("));
}

TEST_F(RegistrationScenario, AnApplicationWhoseSignatureIsGoneRegistersNothing) {
  forget();
  std::ofstream(mac().path(ProductMachine::kAppProgram), std::ios::app) << "behind the signature";
  start();

  const CommandResult registered = machine.app({"register"});

  EXPECT_EQ(registered.status, 1);
  EXPECT_EQ(registered.out, "not-registered\n");
  EXPECT_THAT(registered.err, testing::HasSubstr("invalid signature"));
}

TEST_F(RegistrationScenario, AProgramOutsideOfTheApplicationFindsNoHelper) {
  const std::string outside =
      machine.signedCopy(mac().path(ProductMachine::kAppProgram), "halvo-app", "com.halvo.app", "QX4TRM2ZL9");
  start();

  EXPECT_EQ(mac().run(machine.user(), {outside, "status"}).out, "not-found\n");
}

}  // namespace
}  // namespace halvo::sim
