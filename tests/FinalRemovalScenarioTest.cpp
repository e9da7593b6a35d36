// The helper takes itself away.
#include <algorithm>
#include <chrono>

#include "tests/RemovalScenario.h"

namespace halvo::sim {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::StartsWith;

class FinalRemovalScenario : public RemovalScenario {
 protected:
  bool helperIsGone() { return !machine.job("system", "com.halvo.helper").has_value(); }
};

TEST_F(FinalRemovalScenario, TheAnswerComesFirstAndThenTheHelperIsGone) {
  start();

  EXPECT_EQ(reply({"finalize"}), "true");

  EXPECT_TRUE(waitUntil([&] { return helperIsGone(); }));
  EXPECT_THAT(helperLog(), Contains("halvo-helper: finalized, booting out com.halvo.helper"));
  EXPECT_EQ(mac().readState("registered-services"), "");
}

// A Mac may end the process before unregistering has answered it, or leave that to what follows.
class FinalRemovalWhen : public FinalRemovalScenario, public testing::WithParamInterface<const char*> {};

TEST_P(FinalRemovalWhen, UnregisteringGoesEitherWayTheReplyIsDeliveredAndTheJobIsGone) {
  mac().writeState("unregister", GetParam());
  start();

  EXPECT_EQ(reply({"finalize"}), "true");

  EXPECT_TRUE(waitUntil([&] { return helperIsGone(); }));
  EXPECT_EQ(mac().readState("registered-services"), "");
}

INSTANTIATE_TEST_SUITE_P(Table, FinalRemovalWhen, testing::Values("keep", "kill"),
                         [](const auto& row) { return std::string(row.param); });

TEST_F(FinalRemovalScenario, AfterwardsNobodyAnswers) {
  start();
  machine.app({"finalize"});
  ASSERT_TRUE(waitUntil([&] { return helperIsGone(); }));

  const CommandResult ping = machine.app({"ping"});

  EXPECT_EQ(ping.out, "");
  EXPECT_NE(ping.status, 0);
}

TEST_F(FinalRemovalScenario, RegisteredAgainTheHelperServesAndInstalls) {
  start();
  machine.app({"finalize"});
  ASSERT_TRUE(waitUntil([&] { return helperIsGone(); }));

  machine.reinstallApplication();

  EXPECT_EQ(reply({"ping"}), kPingReply);
  EXPECT_EQ(reply(ProductMachine::install(machine.package({}))), kInstalledReply);
}

TEST_F(FinalRemovalScenario, ARequestBeforeTheDelayIsOverIsStillServed) {
  // Slowed down, the delay lasts long enough for a request of any speed.
  mac().writeState("clock-rate", "0.05\n");
  start();
  machine.app({"finalize"});

  EXPECT_EQ(reply({"ping"}), kPingReply);

  EXPECT_FALSE(helperIsGone());
}

TEST_F(FinalRemovalScenario, TheWorkDoesNotBeginBeforeThreeTenthsOfASecondHavePassed) {
  // Slowed down to three seconds, which no other delay comes near to.
  mac().writeState("clock-rate", "0.1\n");
  start();
  const auto before = std::chrono::steady_clock::now();
  machine.app({"finalize"});

  ASSERT_TRUE(waitUntil([&] { return helperIsGone(); }));

  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::seconds(3));
}

TEST_F(FinalRemovalScenario, ARunningInstallIsCompletedFirst) {
  start();
  auto install =
      machine.appAsync(ProductMachine::install(machine.package({.extra = {"--postinstall", waitingScript(mac())}})));
  ASSERT_TRUE(waitUntil([&] { return stands("/Library/LaunchAgents/com.halvo.daemon.plist"); }));

  EXPECT_EQ(reply({"finalize"}), "true");
  EXPECT_FALSE(waitUntil([&] { return helperIsGone(); }, std::chrono::milliseconds(800)));
  letItGo(mac());

  EXPECT_EQ(install.get().out, std::string(kInstalledReply) + "\n");
  EXPECT_TRUE(waitUntil([&] { return helperIsGone(); }));
}

TEST_F(FinalRemovalScenario, AskedTwiceBeforeTheDelayIsOverItIsDoneOnce) {
  mac().writeState("clock-rate", "0.1\n");
  start();

  EXPECT_EQ(reply({"finalize"}), "true");
  EXPECT_EQ(reply({"finalize"}), "true");

  EXPECT_TRUE(waitUntil([&] { return helperIsGone(); }));
  EXPECT_EQ(std::ranges::count(helperLog(), "halvo-helper: finalized, booting out com.halvo.helper"), 1);
}

TEST_F(FinalRemovalScenario, AFailingUnregistrationIsLoggedAndTheHelperIsBootedOut) {
  start();
  machine.app({"ping"});
  mac().writeState("registered-services", "");

  EXPECT_EQ(reply({"finalize"}), "true");

  EXPECT_TRUE(waitUntil([&] { return helperIsGone(); }));
  EXPECT_THAT(helperLog(), IsSupersetOf({StartsWith("halvo-helper: SMAppService unregister failed: "),
                                         StartsWith("halvo-helper: finalized, booting out com.halvo.helper")}));
}

TEST_F(FinalRemovalScenario, TheHelperEndsItselfWhenLaunchdDoesNot) {
  start();
  machine.app({"ping"});
  mac().writeState("registered-services", "");
  mac().writeState("faults/launchctl", "5\n");

  EXPECT_EQ(reply({"finalize"}), "true");

  EXPECT_TRUE(waitUntil([&] { return !machine.helperProcess().has_value(); }));
  EXPECT_EQ(machine.job("system", "com.halvo.helper")->lastExitStatus, 0);
  EXPECT_EQ(helperLog().back(), "halvo-helper: bootout returned 5, exiting");
}

TEST_F(FinalRemovalScenario, WithoutAGrantTheHelperStays) {
  start();

  EXPECT_EQ(reply({"finalize", "--without-grant"}), "false");
  machine.app({"legacy", "finalize"});

  EXPECT_EQ(reply({"ping"}), kPingReply);
  EXPECT_FALSE(helperIsGone());
}

TEST_F(FinalRemovalScenario, TheJobTableLosesTheProductAndNothingElse) {
  installed();
  machine.app({"prepare-removal"});
  machine.app({"finalize"});
  ASSERT_TRUE(waitUntil([&] { return helperIsGone(); }));

  const std::vector<JobState> jobs = mac().jobs();

  EXPECT_THAT(jobs, ElementsAre(testing::Field(&JobState::label, "com.apple.audio.coreaudiod")));
}

}  // namespace
}  // namespace halvo::sim
