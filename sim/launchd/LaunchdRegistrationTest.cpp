// Services that the application registers and unregisters.
#include "sim/launchd/testing/RunningLaunchd.h"
#include "sim/support/WaitUntil.h"

namespace halvo::sim {
namespace {

TEST_F(LaunchdTest, ARegisteredServiceOutlivesARestart) {
  const auto plist = launchd.job(kElsewhere, "test.server", {"serve"}, publishing("test.service"));
  launchd.start();

  EXPECT_EQ(launchd.control().registerService(plist).status, 0);
  EXPECT_EQ(launchd.stop(), 0);
  launchd.start();

  EXPECT_EQ(launchd.root.read("sim/registered-services"), plist + "\n");
  EXPECT_EQ(launchd.ask("test.service")["listen_fds"], "1");
}

TEST_F(LaunchdTest, RegisteringTwiceChangesNothing) {
  const auto plist = launchd.job(kElsewhere, "test.server", {"serve"}, publishing("test.service"));
  launchd.start();

  EXPECT_EQ(launchd.control().registerService(plist).status, 0);
  EXPECT_EQ(launchd.control().registerService(plist).status, 0);

  EXPECT_EQ(launchd.root.read("sim/registered-services"), plist + "\n");
}

TEST_F(LaunchdTest, UnregisteringLeavesTheProcessAndAnswersNobodyElse) {
  const auto plist = launchd.job(kElsewhere, "test.server", {"serve"}, publishing("test.service"));
  launchd.start();
  launchd.control().registerService(plist);
  const pid_t process = launchd.ask("test.service")["pid"];

  EXPECT_EQ(launchd.control().unregisterService("test.server.plist"), std::nullopt);

  EXPECT_TRUE(alive(process));
  EXPECT_EQ(launchd.root.read("sim/registered-services"), "");
  EXPECT_TRUE(launchd.ask("test.service").is_null());
  EXPECT_EQ(launchd.control().bootout("system/test.server").status, 0);
  EXPECT_FALSE(alive(process));
}

TEST_F(LaunchdTest, UnregisteringMayEndTheProcess) {
  const auto plist = launchd.job(kElsewhere, "test.server", {"serve"}, publishing("test.service"));
  launchd.root.write("sim/unregister", "kill\n");
  launchd.start();
  launchd.control().registerService(plist);
  const pid_t process = launchd.ask("test.service")["pid"];

  EXPECT_EQ(launchd.control().unregisterService("test.server.plist"), std::nullopt);

  EXPECT_TRUE(waitUntil([&] { return !alive(process) && !launchd.state("system", "test.server"); }));
}

TEST_F(LaunchdTest, WhileAJobIsBeingEndedItIsNeitherBootedOutNorLoadedAgain) {
  const std::string ready = (launchd.root.path() / "ready").string();
  const auto plist =
      launchd.job(kElsewhere, "test.deaf", {"stubborn", ready}, kAtLoad + "<key>ExitTimeOut</key><integer>0</integer>");
  launchd.root.write("sim/unregister", "kill\n");
  launchd.start();
  launchd.control().registerService(plist);
  ASSERT_TRUE(waitUntil([&] { return std::filesystem::exists(ready); }));
  const pid_t process = launchd.state("system", "test.deaf")->pid.value();
  launchd.control().unregisterService("test.deaf.plist");

  EXPECT_EQ(launchd.control().bootout("system/test.deaf"), (ControlReply{36, "Operation now in progress"}));
  EXPECT_EQ(launchd.control().bootstrap("system", plist).status, 36);
  EXPECT_EQ(launchd.control().registerService(plist).status, 36);

  ::kill(process, SIGKILL);
  EXPECT_TRUE(waitUntil([&] { return !launchd.state("system", "test.deaf"); }));
}

TEST_F(LaunchdTest, UnregisteringAJobThatDoesNotRunForgetsIt) {
  const auto plist = launchd.job(kElsewhere, "test.server", {"serve"}, publishing("test.service"));
  launchd.start();
  launchd.control().registerService(plist);

  EXPECT_EQ(launchd.control().unregisterService("test.server.plist"), std::nullopt);

  EXPECT_FALSE(launchd.state("system", "test.server"));
  EXPECT_EQ(launchd.control().registerService(plist).status, 0);
}

TEST_F(LaunchdTest, AJobThatWasUnregisteredIsForgottenWhenItsProcessEnds) {
  const auto plist = launchd.job(kElsewhere, "test.server", {"serve"}, publishing("test.service") + kAlways);
  launchd.start();
  launchd.control().registerService(plist);
  const pid_t process = launchd.ask("test.service")["pid"];
  EXPECT_EQ(launchd.control().unregisterService("test.server.plist"), std::nullopt);

  EXPECT_EQ(launchd.control().registerService(plist).status, 36);
  ::kill(process, SIGKILL);

  EXPECT_TRUE(waitUntil([&] { return !launchd.state("system", "test.server"); }));
}

TEST_F(LaunchdTest, AnApplicationRegistersOnce) {
  const auto plist = launchd.job(kElsewhere, "test.server", {"serve"}, publishing("test.service"));
  launchd.start();

  EXPECT_EQ(launchd.control().registrationOf(plist).text, "not-registered");
  EXPECT_EQ(launchd.control().submitService(plist).status, 0);
  EXPECT_EQ(launchd.control().submitService(plist).status, 12);

  EXPECT_EQ(launchd.control().registrationOf(plist).text, "enabled");
  EXPECT_EQ(launchd.ask("test.service")["listen_fds"], "1");
}

TEST_F(LaunchdTest, WhatAnAdministratorHasToApproveIsNotServedBefore) {
  const auto plist = launchd.job(kElsewhere, "test.server", {"serve"}, publishing("test.service"));
  launchd.root.write("sim/background-approval", "ask\n");
  launchd.start();

  EXPECT_EQ(launchd.control().submitService(plist).status, 1);
  EXPECT_EQ(launchd.control().submitService(plist).status, 1);

  EXPECT_EQ(launchd.control().registrationOf(plist).text, "requires-approval");
  EXPECT_TRUE(launchd.ask("test.service").is_null());

  EXPECT_EQ(launchd.control().registerService(plist).status, 0);
  EXPECT_EQ(launchd.control().registrationOf(plist).text, "enabled");
  EXPECT_EQ(launchd.root.read("sim/unapproved-services"), "");
}

TEST_F(LaunchdTest, WhatWaitsForApprovalIsUnregistered) {
  const auto plist = launchd.job(kElsewhere, "test.server", {"serve"}, publishing("test.service"));
  launchd.root.write("sim/background-approval", "ask\n");
  launchd.start();
  launchd.control().submitService(plist);

  EXPECT_EQ(launchd.control().unregisterService("test.server.plist"), std::nullopt);

  EXPECT_EQ(launchd.control().registrationOf(plist).text, "not-registered");
}

TEST_F(LaunchdTest, UnregisteringWhatIsNotRegisteredSaysSo) {
  launchd.start();

  EXPECT_EQ(launchd.control().unregisterService("test.server.plist"),
            "The operation couldn’t be completed. (SMAppServiceErrorDomain error 6: job not found)");
}

}  // namespace
}  // namespace halvo::sim
