// Everything goes, asked by the program that goes with it.
#include <algorithm>

#include "tests/RemovalScenario.h"

namespace halvo::sim {
namespace {

class WholeRemovalScenario : public RemovalScenario {
 protected:
  bool helperIsGone() { return !machine.job("system", "com.halvo.helper").has_value(); }
};

TEST_F(WholeRemovalScenario, WorksFromInsideTheBundleThatItRemoves) {
  installed();
  const std::string promptsBefore = mac().readState("authorization-prompts");

  const CommandResult result = machine.app({"uninstall"});

  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, R"({"code":"ok","gui_app_path":"/Applications/Halvo.app"})"
                        "\ntrue\ntrue\n");
  EXPECT_EQ(result.err, "");
  EXPECT_THAT(machine.components(), testing::IsEmpty());
  EXPECT_FALSE(stands("/Applications/Halvo.app"));
  EXPECT_TRUE(waitUntil([&] { return helperIsGone(); }));
  const std::string prompts = mac().readState("authorization-prompts").substr(promptsBefore.size());
  EXPECT_EQ(std::ranges::count(prompts, '\n'), 1);
}

TEST_F(WholeRemovalScenario, EndsBeforeTheApplicationGoesWhereAudioRuns) {
  mac().writeState("audio-devices", "1\n");
  start();

  const CommandResult result = machine.app({"uninstall"});

  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "{\"code\":\"audio_active\"}\n");
  EXPECT_THAT(result.err, testing::EndsWith("The application and its helper stay as they are.\n"));
  EXPECT_TRUE(stands("/Applications/Halvo.app"));
  EXPECT_EQ(reply({"ping"}), kPingReply);
}

TEST_F(WholeRemovalScenario, KeepsTheHelperWhereTheApplicationCannotGo) {
  start();

  const CommandResult result = machine.app({"uninstall", "/tmp/Halvo.app", "--without-checks"});

  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, testing::EndsWith("the application and its helper are not.\n"));
  EXPECT_EQ(reply({"ping"}), kPingReply);
}

}  // namespace
}  // namespace halvo::sim
