#include "client/Conversation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>
#include <utility>

namespace halvo {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;

// A helper that does nothing but keep the reply of a ping for the test to give.
class KeepingHelper final : public HalvoHelperProtocol {
 public:
  void ping(const TextReply& reply) override { note("ping", reply); }
  void enumerateActiveGuiDomains(const TextReply& reply) override { note("users", reply); }
  void prepareForRemoval(bool, const TextReply& reply) override { note("legacy prepareForRemoval", reply); }
  void removeAppBundle(const std::string&, const BoolReply&) override {}
  void finalizeRemoval() override { requests.emplace_back("legacy finalizeRemoval"); }
  void installSystemPkg(const std::string&, const std::string&, bool, const TextReply&) override {}
  void prepareForRemoval(const AuthorizationBlob&, bool, const TextReply&) override {}
  void removeAppBundle(const AuthorizationBlob&, const std::string&, const BoolReply&) override {}
  void finalizeRemoval(const AuthorizationBlob&, const BoolReply&) override {}
  void installSystemPkg(const AuthorizationBlob&, const std::string&, const std::string&, bool,
                        const TextReply&) override {}

  std::vector<std::string> requests;
  TextReply kept;
  bool answersAtOnce = true;

 private:
  void note(const std::string& request, const TextReply& reply) {
    requests.push_back(request);
    kept = reply;
    if (answersAtOnce) reply("pong");
  }
};

class KeepingClient final : public ServiceClient {
 public:
  explicit KeepingClient(std::shared_ptr<KeepingHelper> helper, FailureHandler& onFailure)
      : helper_(std::move(helper)), onFailure_(onFailure) {}
  std::shared_ptr<HalvoHelperProtocol> proxy(FailureHandler onFailure) override {
    onFailure_ = std::move(onFailure);
    return helper_;
  }

 private:
  std::shared_ptr<KeepingHelper> helper_;
  FailureHandler& onFailure_;
};

void ping(HalvoHelperProtocol& helper, const TextReply& text, const BoolReply&) { helper.ping(text); }

const ServiceFailure kInterrupted{ServiceFailure::Kind::interrupted, "gone"};

class ConversationTest : public testing::Test {
 protected:
  Conversation with(const Pace& pace = {}) {
    return Conversation(std::make_unique<KeepingClient>(helper, onFailure), pace);
  }

  std::shared_ptr<KeepingHelper> helper = std::make_shared<KeepingHelper>();
  ServiceClient::FailureHandler onFailure;
};

TEST_F(ConversationTest, ReplyIsTheOutcome) { EXPECT_EQ(with().ask(ping), Outcome("pong")); }

TEST_F(ConversationTest, FailureIsTheOutcome) {
  const Outcome outcome = with().ask([&](auto&, auto&, auto&) { onFailure(kInterrupted); });

  EXPECT_EQ(outcome, Outcome(kInterrupted));
}

TEST_F(ConversationTest, OfTwoAnswersTheFirstCounts) {
  const Outcome outcome = with().ask([&](auto&, auto& text, auto& boolean) {
    text("first");
    boolean(true);
    onFailure(kInterrupted);
  });

  EXPECT_EQ(outcome, Outcome("first"));
}

TEST_F(ConversationTest, QuickAnswerIsNotWaitedFor) {
  int looks = 0;
  with().ask(ping, [&] { ++looks; });

  EXPECT_EQ(looks, 0);
}

TEST_F(ConversationTest, SlowAnswerIsWaitedForAndTheLastLookComesAfterIt) {
  helper->answersAtOnce = false;
  std::vector<std::string> looks;
  const Outcome outcome = with({milliseconds(0), milliseconds(0)}).ask(ping, [&] {
    looks.push_back("look " + std::to_string(looks.size()));
    if (looks.size() == 3) helper->kept("at last");
  });

  EXPECT_EQ(outcome, Outcome("at last"));
  EXPECT_THAT(looks, ElementsAre("look 0", "look 1", "look 2", "look 3"));
}

TEST_F(ConversationTest, AnswerMayComeFromAnotherThread) {
  helper->answersAtOnce = false;
  std::thread answering;
  const Outcome outcome = with().ask([&](auto& proxy, auto& text, auto&) {
    proxy.ping(text);
    answering = std::thread([reply = helper->kept] { reply("from afar"); });
  });
  answering.join();

  EXPECT_EQ(outcome, Outcome("from afar"));
}

TEST_F(ConversationTest, MessageWithoutReplyIsFollowedByAPing) {
  const Outcome outcome = with().tell([](HalvoHelperProtocol& proxy) { proxy.finalizeRemoval(); });

  EXPECT_EQ(outcome, Outcome(NoReply{}));
  EXPECT_THAT(helper->requests, ElementsAre("legacy finalizeRemoval", "ping"));
}

TEST_F(ConversationTest, MessageWithoutReplyThatCannotBeSentIsAFailure) {
  const Outcome outcome = with().tell([&](HalvoHelperProtocol&) { onFailure(kInterrupted); });

  EXPECT_EQ(outcome, Outcome(kInterrupted));
}

}  // namespace
}  // namespace halvo
