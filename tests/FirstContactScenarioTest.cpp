// From nothing running to the first answers, and back to nothing running.
#include <fcntl.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "tests/Scenario.h"

namespace halvo::sim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kHelper = "/Applications/Halvo.app/Contents/MacOS/halvo-helper";

class FirstContactScenario : public Scenario {
 protected:
  // Puts a script in the helper's place that becomes the helper, with SIGCHLD ignored and no standard descriptors.
  void startTheHelperInAnOddState() {
    const std::string moved = std::string(kHelper) + ".moved";
    std::filesystem::rename(mac().path(kHelper), mac().path(moved));
    mac().writeFile(kHelper, "#!/bin/sh\nexec env --ignore-signal=CHLD " + moved + " <&- >&- 2>&-\n", 0755);
  }
};

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
  // The second line is written when the listener serves already.
  ASSERT_TRUE(waitUntil([&] { return helperLog().size() >= 2; }));

  EXPECT_THAT(helperLog(),
              ElementsAre("halvo-helper: admin right com.halvo.helper.manage-system registered status=0 sound=1",
                          "halvo-helper: XPC listener up on com.halvo.helper (v6)"));
}

TEST_F(FirstContactScenario, NobodyIsServedBeforeTheRightIsInOrder) {
  const std::filesystem::path faults = mac().path("/sim/faults/authorization");
  std::filesystem::create_directories(faults.parent_path());
  ASSERT_EQ(::mkfifo(faults.c_str(), 0644), 0);
  start();
  auto ping = machine.appAsync({"ping"});
  // Whoever writes the right reads this file first, and waits there for as long as it is open for writing.
  UniqueDescriptor held;
  ASSERT_TRUE(waitUntil([&] {
    held = UniqueDescriptor(::open(faults.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
    return held.valid();
  }));

  EXPECT_THAT(helperLog(), IsEmpty());

  mac().writeState("faults/authorization", "");
  held.close();
  EXPECT_EQ(ping.get().out, std::string(kPingReply) + "\n");
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

TEST_F(FirstContactScenario, ARightThatIsSoundAlreadyServesThoughItCannotBeWrittenAgain) {
  start();
  machine.app({"ping"});
  mac().stop();
  mac().writeState("faults/authorization", "right-set -60005\n");
  start();

  EXPECT_EQ(reply(ProductMachine::install(machine.package({}))), kInstalledReply);
  EXPECT_THAT(helperLog(), testing::Contains(HasSubstr("registered status=-60005 sound=1")));
}

TEST_F(FirstContactScenario, ARightThatWasWrittenAndCannotBeReadBackRefusesEveryOperation) {
  mac().writeState("faults/authorization", "right-get -60005\n");
  start();

  EXPECT_EQ(reply(ProductMachine::install(machine.package({}))), kUnauthorizedReply);
  EXPECT_THAT(helperLog(), testing::Contains(HasSubstr("registered status=0 sound=0")));
}

TEST_F(FirstContactScenario, TheHelperStaysForAMinuteAfterARequest) {
  mac().writeState("clock-rate", "60\n");
  start();
  const auto before = std::chrono::steady_clock::now();
  machine.app({"ping"});

  ASSERT_TRUE(waitUntil([&] { return !machine.helperProcess().has_value(); }));

  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::seconds(1));
}

TEST_F(FirstContactScenario, AHelperThatWasStartedInAnOddStateRunsItsToolsAsEver) {
  startTheHelperInAnOddState();
  start();

  EXPECT_EQ(reply(ProductMachine::install(machine.package({}))), kInstalledReply);
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
