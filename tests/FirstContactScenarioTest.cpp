// From nothing running to the first answers, and back to nothing running.
#include "tests/Scenario.h"

namespace halvo::sim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

using FirstContactScenario = Scenario;

TEST_F(FirstContactScenario, NothingRunsUntilAClientConnects) {
  start();

  EXPECT_TRUE(machine.job("system", "com.halvo.helper").has_value());
  EXPECT_FALSE(machine.helperProcess().has_value());
}

TEST_F(FirstContactScenario, TheFirstRequestStartsTheHelperAndIsAnswered) {
  start();

  EXPECT_EQ(reply({"ping"}), kPingReply);

  EXPECT_TRUE(machine.helperProcess().has_value());
}

TEST_F(FirstContactScenario, TheStartIsLoggedLineByLine) {
  start();
  machine.app({"ping"});

  EXPECT_THAT(helperLog(),
              ElementsAre("halvo-helper: admin right com.halvo.helper.manage-system registered status=0 sound=1",
                          "halvo-helper: XPC listener up on com.halvo.helper (v6)"));
}

TEST_F(FirstContactScenario, OneHelperServesManyConnections) {
  start();
  machine.app({"ping"});
  const auto first = machine.helperProcess();

  machine.app({"ping"});

  EXPECT_EQ(machine.helperProcess(), first);
}

TEST_F(FirstContactScenario, OnlyUsersWithAGraphicalSessionAreListed) {
  mac().writeState("gui-sessions", "502\n501\n");
  start();

  EXPECT_EQ(reply({"users"}), R"({"uids":[501,502]})");
}

TEST_F(FirstContactScenario, WithoutAGraphicalSessionTheListIsEmpty) {
  mac().writeState("gui-sessions", "");
  start();

  EXPECT_EQ(reply({"users"}), R"({"uids":[]})");
}

TEST_F(FirstContactScenario, ARightThatCannotBeWrittenRefusesEveryOperationButAnswersPing) {
  mac().writeState("faults/authorization", "right-set -60005\n");
  start();

  EXPECT_EQ(reply({"ping"}), kPingReply);
  EXPECT_EQ(reply(ProductMachine::install(machine.package({}))), kUnauthorizedReply);
  EXPECT_THAT(helperLog(), testing::Contains(HasSubstr("registered status=-60005 sound=0")));
}

TEST_F(FirstContactScenario, AWeakRightThatCannotBeRepairedRefusesEveryOperationButAnswersPing) {
  mac().writeState("authorization-db/com.halvo.helper.manage-system.json", R"({"class":"allow"})");
  mac().writeState("faults/authorization", "right-set -60005\n");
  start();

  EXPECT_EQ(reply({"ping"}), kPingReply);
  EXPECT_EQ(reply(ProductMachine::install(machine.package({}))), kUnauthorizedReply);
  EXPECT_THAT(helperLog(), testing::Contains(HasSubstr("registered status=-60005 sound=0")));
}

TEST_F(FirstContactScenario, AfterAMinuteOfIdlenessTheHelperExitsAndTheNextRequestStartsItAgain) {
  mac().writeState("clock-rate", "60\n");
  start();
  machine.app({"ping"});

  ASSERT_TRUE(waitUntil([&] { return !machine.helperProcess().has_value(); }));

  EXPECT_THAT(helperLog(), testing::Contains("halvo-helper: idle for 60 s, exiting (launchd restarts on demand)"));
  EXPECT_EQ(machine.job("system", "com.halvo.helper")->lastExitStatus, 0);
  EXPECT_EQ(reply({"ping"}), kPingReply);
}

}  // namespace
}  // namespace halvo::sim
