#include "client/Commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <utility>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/frameworks/testing/FrameworkProbe.h"
#include "sim/support/StateRoot.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// A helper that notes each request as one line and answers from a script.
class ScriptedHelper final : public HalvoHelperProtocol {
 public:
  void ping(const TextReply& reply) override { note("ping"), reply(pingReply); }
  void enumerateActiveGuiDomains(const TextReply& reply) override { note("users"), reply(textReply); }
  void prepareForRemoval(bool accept, const TextReply& reply) override {
    note("legacy prepareForRemoval " + flag(accept)), reply(textReply);
  }
  void removeAppBundle(const std::string& path, const BoolReply& reply) override {
    note("legacy removeAppBundle " + path), reply(boolReply);
  }
  void finalizeRemoval() override { note("legacy finalizeRemoval"); }
  void installSystemPkg(const std::string& path, const std::string& manifest, bool accept,
                        const TextReply& reply) override {
    note("legacy install " + path + " " + manifest + " " + flag(accept)), reply(textReply);
  }
  void prepareForRemoval(const AuthorizationBlob& form, bool accept, const TextReply& reply) override {
    note("prepareForRemoval " + size(form) + " " + flag(accept)), reply(textReply);
  }
  void removeAppBundle(const AuthorizationBlob& form, const std::string& path, const BoolReply& reply) override {
    note("removeAppBundle " + size(form) + " " + path), reply(boolReply);
  }
  void finalizeRemoval(const AuthorizationBlob& form, const BoolReply& reply) override {
    note("finalizeRemoval " + size(form)), reply(boolReply);
  }
  void installSystemPkg(const AuthorizationBlob& form, const std::string& path, const std::string& manifest,
                        bool accept, const TextReply& reply) override {
    note("install " + size(form) + " " + path + " " + manifest + " " + flag(accept)), reply(textReply);
  }

  std::string pingReply = R"({"ok":true,"helper_version":6,"build_abi":1})";
  std::string textReply = R"({"code":"ok","changed":[]})";
  bool boolReply = true;
  std::vector<std::string> requests;

 private:
  void note(const std::string& request) { requests.push_back(request); }
  static std::string flag(bool value) { return value ? "true" : "false"; }
  static std::string size(const AuthorizationBlob& form) { return std::to_string(form.size()) + " bytes"; }
};

class ScriptedClient final : public ServiceClient {
 public:
  explicit ScriptedClient(std::shared_ptr<ScriptedHelper> helper) : helper_(std::move(helper)) {}
  std::shared_ptr<HalvoHelperProtocol> proxy(FailureHandler) override { return helper_; }

 private:
  std::shared_ptr<ScriptedHelper> helper_;
};

class CommandsTest : public testing::Test {
 protected:
  CommandsTest() { sim::setStateRoot(state.path()); }
  ~CommandsTest() override { sim::setStateRoot("/sim"); }

  ExitStatus run(const CommandLine& command) {
    Conversation conversation(std::make_unique<ScriptedClient>(helper));
    return runCommand(command, conversation, out, err);
  }

  void letTheAdministrator(const std::string& answer) { state.makeFile("authorization-answer", answer); }

  // The right as the helper registers it, so that a grant can be obtained.
  void knowTheRight() {
    state.makeFile("authorization-db/com.halvo.helper.manage-system.json",
                   R"({"class":"user","group":"admin","timeout":300,"shared":false})");
  }

  TemporaryDirectory state;
  std::shared_ptr<ScriptedHelper> helper = std::make_shared<ScriptedHelper>();
  std::ostringstream out;
  std::ostringstream err;
};

TEST_F(CommandsTest, PingNeedsNoApprovalAndPrintsTheReplyAsItCame) {
  EXPECT_EQ(run({.verb = Verb::ping}), ExitStatus::success);

  EXPECT_EQ(out.str(), "{\"ok\":true,\"helper_version\":6,\"build_abi\":1}\n");
  EXPECT_EQ(err.str(), "");
  EXPECT_THAT(helper->requests, ElementsAre("ping"));
}

TEST_F(CommandsTest, AChangeCarriesTheThirtyTwoBytesOfAnApproval) {
  knowTheRight();
  letTheAdministrator("allow");

  EXPECT_EQ(run({.verb = Verb::removeBundle, .path = "relative/Halvo.app"}), ExitStatus::success);

  EXPECT_THAT(helper->requests, ElementsAre("ping", "removeAppBundle 32 bytes relative/Halvo.app"));
  EXPECT_EQ(out.str(), "true\n");
}

TEST_F(CommandsTest, AnAdministratorWhoRefusesEndsItBeforeTheHelperIsAsked) {
  knowTheRight();
  letTheAdministrator("deny");

  EXPECT_EQ(run({.verb = Verb::prepareRemoval}), ExitStatus::unauthorized);

  EXPECT_THAT(helper->requests, ElementsAre("ping"));
  EXPECT_EQ(out.str(), "");
  EXPECT_THAT(err.str(), HasSubstr("An administrator has to approve this, and none did (status -6000"));
}

TEST_F(CommandsTest, WithoutAGrantNobodyIsAsked) {
  EXPECT_EQ(run({.verb = Verb::prepareRemoval, .withoutGrant = true}), ExitStatus::success);

  EXPECT_THAT(helper->requests, ElementsAre("ping", "prepareForRemoval 32 bytes false"));
  EXPECT_FALSE(isNamed(state.path("authorization-prompts")));
}

TEST_F(CommandsTest, AHelperOfAnOlderVersionIsNotAskedForAChange) {
  helper->pingReply = R"({"ok":true,"helper_version":5,"build_abi":1})";

  EXPECT_EQ(run({.verb = Verb::finalize}), ExitStatus::helperTooOld);

  EXPECT_THAT(helper->requests, ElementsAre("ping"));
}

TEST_F(CommandsTest, AnInstallSendsTheManifestsTextAndAnAbsolutePath) {
  const std::string manifest = state.makeFile("m.json", R"({"driver_version":"1"})");

  run({.verb = Verb::install, .withoutGrant = true, .path = "/tmp/a.pkg", .manifestPath = manifest});

  EXPECT_THAT(helper->requests, ElementsAre("ping", R"(install 32 bytes /tmp/a.pkg {"driver_version":"1"} false)"));
}

TEST_F(CommandsTest, AManifestThatCannotBeReadEndsItBeforeAnythingElse) {
  EXPECT_EQ(run({.verb = Verb::install, .path = "/tmp/a.pkg", .manifestPath = "/nowhere/m.json"}),
            ExitStatus::unreadableManifest);

  EXPECT_THAT(helper->requests, IsEmpty());
  EXPECT_THAT(err.str(), HasSubstr("The manifest /nowhere/m.json cannot be read."));
}

TEST_F(CommandsTest, ALegacyRequestCarriesNoApproval) {
  helper->textReply = R"({"code":"unauthorized"})";

  EXPECT_EQ(run({.verb = Verb::prepareRemoval, .legacy = true}), ExitStatus::unauthorized);

  EXPECT_THAT(helper->requests, ElementsAre("legacy prepareForRemoval false"));
}

TEST_F(CommandsTest, ALegacyFinalRemovalIsFollowedByAPingThatShowsItArrived) {
  EXPECT_EQ(run({.verb = Verb::finalize, .legacy = true}), ExitStatus::unauthorized);

  EXPECT_THAT(helper->requests, ElementsAre("legacy finalizeRemoval", "ping"));
}

TEST_F(CommandsTest, ARefusalIsPrintedAsItCameAndExplained) {
  helper->textReply = R"({"code":"audio_active"})";

  EXPECT_EQ(run({.verb = Verb::prepareRemoval, .withoutGrant = true}), ExitStatus::refused);

  EXPECT_EQ(out.str(), "{\"code\":\"audio_active\"}\n");
  EXPECT_THAT(err.str(), HasSubstr("Audio is running"));
}

TEST_F(CommandsTest, EveryAuthorizationReferenceIsFreed) {
  knowTheRight();
  letTheAdministrator("allow");
  const std::int64_t before = sim::FrameworkProbe::liveObjects();

  run({.verb = Verb::prepareRemoval});
  letTheAdministrator("deny");
  run({.verb = Verb::prepareRemoval});

  EXPECT_EQ(sim::FrameworkProbe::liveObjects(), before);
}

}  // namespace
}  // namespace halvo
