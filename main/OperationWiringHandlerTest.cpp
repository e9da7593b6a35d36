// The handlers that the wiring makes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "HalvoHelper/testing/SignatureReports.h"
#include "main/WiringBench.h"

namespace halvo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class WiredHandlerTest : public WiringBench {};

struct Replies {
  TextReply text() {
    return [this](const std::string& json) { given.push_back(json); };
  }
  BoolReply boolean() {
    return [this](bool succeeded) { given.push_back(succeeded ? "true" : "false"); };
  }
  std::vector<std::string> given;
};

TEST_F(WiredHandlerTest, MakesHandlersThatAnswerWithBuildAbiOne) {
  Replies replies;

  wiring()->makeHandler()->ping(replies.text());

  EXPECT_THAT(replies.given, ElementsAre(R"({"ok":true,"helper_version":6,"build_abi":1})"));
}

TEST_F(WiredHandlerTest, MakesANewHandlerEachTime) {
  const auto made = wiring();

  EXPECT_NE(made->makeHandler(), made->makeHandler());
}

TEST_F(WiredHandlerTest, HandlersShareTheTracker) {
  bool idleMeanwhile = true;

  wiring()->makeHandler()->ping([&](const std::string&) { idleMeanwhile = tracker_->isIdle(0.0); });

  EXPECT_FALSE(idleMeanwhile);
  EXPECT_TRUE(tracker_->isIdle(0.0));
}

TEST_F(WiredHandlerTest, HandlerKeepsItsWiring) {
  Replies replies;
  auto made = wiring();
  const std::weak_ptr<const OperationWiring> watched = made;
  const auto handler = made->makeHandler();
  made.reset();

  handler->enumerateActiveGuiDomains(replies.text());

  EXPECT_FALSE(watched.expired());
  EXPECT_THAT(replies.given, ElementsAre(R"({"uids":[]})"));
}

TEST_F(WiredHandlerTest, HandlerDoesNothingForAClientWithoutTheRight) {
  Replies replies;
  authorizer_->answer = false;
  const auto handler = wiring()->makeHandler();

  handler->installSystemPkg(kBlob, "/tmp/a.pkg", "{}", true, replies.text());
  handler->prepareForRemoval(kBlob, true, replies.text());
  handler->removeAppBundle(kBlob, "/Applications/Halvo.app", replies.boolean());
  handler->finalizeRemoval(kBlob, replies.boolean());

  EXPECT_THAT(replies.given, ElementsAre(R"({"code":"unauthorized"})", R"({"code":"unauthorized"})", "false", "false"));
  EXPECT_THAT(calls(), IsEmpty());
  EXPECT_THAT(systemLog_.lines(), IsEmpty());
}

TEST_F(WiredHandlerTest, HandlerDoesNothingForAnybodyWhenTheRightIsUnsound) {
  Replies replies;
  const auto handler = wiring(false)->makeHandler();

  handler->installSystemPkg(kBlob, "/tmp/a.pkg", "{}", true, replies.text());
  handler->prepareForRemoval(kBlob, true, replies.text());
  handler->removeAppBundle(kBlob, "/Applications/Halvo.app", replies.boolean());
  handler->finalizeRemoval(kBlob, replies.boolean());

  EXPECT_THAT(replies.given, ElementsAre(R"({"code":"unauthorized"})", R"({"code":"unauthorized"})", "false", "false"));
  EXPECT_THAT(calls(), IsEmpty());
  EXPECT_THAT(authorizer_->seen, IsEmpty());
}

TEST_F(WiredHandlerTest, HandlerInstallsWithTheArgumentsOfTheClient) {
  Replies replies;
  runner_->replies = {{0, std::string(kGoodSignatureReport)}};
  audio_->flags = {true};

  wiring()->makeHandler()->installSystemPkg(kBlob, "/tmp/b.pkg", "{}", true, replies.text());

  EXPECT_THAT(replies.given, ElementsAre(R"({"code":"ok","changed":["driver","broker","daemon_agent"]})"));
  EXPECT_THAT(calls(), Contains("stageFile /tmp/b.pkg -> /var/db/halvo/install-staging/incoming.pkg"));
}

TEST_F(WiredHandlerTest, HandlerAnswersWhetherTheBundleIsGone) {
  Replies replies;
  const std::string bundle = directory_.makeDirectory("Halvo.app");
  fs_->present = {bundle + "/Contents/MacOS/halvo-app"};

  wiring()->makeHandler()->removeAppBundle(kBlob, bundle, replies.boolean());
  wiring()->makeHandler()->removeAppBundle(kBlob, "/Applications/Other.app", replies.boolean());

  EXPECT_THAT(replies.given, ElementsAre("true", "false"));
  EXPECT_THAT(calls(), Contains("removeTree " + bundle));
}

}  // namespace
}  // namespace halvo
