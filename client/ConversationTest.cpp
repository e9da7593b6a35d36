#include "client/Conversation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <memory>
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
  KeepingClient(std::shared_ptr<KeepingHelper> helper, FailureHandler& onFailure)
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
const ServiceFailure kUnreachable{ServiceFailure::Kind::unreachable, "closed"};
const ServiceFailure kRejected{ServiceFailure::Kind::rejected, "no"};

class ConversationTest : public testing::Test {
 protected:
  Conversation with(const Pace& pace = {}) {
    return Conversation(
        [this] {
          ++connections;
          return std::make_unique<KeepingClient>(helper, onFailure);
        },
        pace);
  }

  // Answers each request with the next of these outcomes.
  Conversation::Request answering(std::deque<Outcome> outcomes) {
    return [this, outcomes = std::make_shared<std::deque<Outcome>>(std::move(outcomes))](auto&, auto& text, auto&) {
      const Outcome next = outcomes->front();
      outcomes->pop_front();
      std::holds_alternative<std::string>(next) ? text(std::get<std::string>(next))
                                                : onFailure(std::get<ServiceFailure>(next));
    };
  }

  int connections = 0;

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

TEST_F(ConversationTest, AnAnswerThatDoesNotComeInTimeIsNotWaitedForLonger) {
  helper->answersAtOnce = false;
  int looks = 0;
  Conversation conversation = with({milliseconds(0), milliseconds(1)});
  conversation.waitAtMost(milliseconds(20));

  EXPECT_EQ(conversation.ask(ping, [&] { ++looks; }), Outcome(TimedOut{}));
  EXPECT_GT(looks, 0);
}

TEST_F(ConversationTest, ALimitShorterThanThePatienceHoldsAsWell) {
  helper->answersAtOnce = false;
  int looks = 0;
  Conversation conversation = with({std::chrono::hours(1), milliseconds(1)});
  conversation.waitAtMost(milliseconds(1));

  EXPECT_EQ(conversation.ask(ping, [&] { ++looks; }), Outcome(TimedOut{}));
  EXPECT_EQ(looks, 0);
}

TEST_F(ConversationTest, AnAnswerInTimeIsTheOutcome) {
  Conversation conversation = with();
  conversation.waitAtMost(std::chrono::hours(1));

  EXPECT_EQ(conversation.ask(ping), Outcome("pong"));
}

TEST_F(ConversationTest, WhatDoesNotComeInTimeIsNotAskedForAgain) {
  helper->answersAtOnce = false;
  Conversation conversation = with();
  conversation.waitAtMost(milliseconds(1));

  EXPECT_EQ(conversation.askRepeatably(ping), Outcome(TimedOut{}));
  EXPECT_EQ(conversation.tell([](HalvoHelperProtocol& proxy) { proxy.finalizeRemoval(); }), Outcome(TimedOut{}));
  EXPECT_THAT(helper->requests, ElementsAre("ping", "legacy finalizeRemoval", "ping"));
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

// A helper that answers after a moment, from a thread of its own.
class SlowAnswer {
 public:
  void give(const TextReply& reply) {
    thread_ = std::thread([reply] {
      std::this_thread::sleep_for(milliseconds(20));
      reply("at last");
    });
  }
  ~SlowAnswer() {
    if (thread_.joinable()) thread_.join();
  }

 private:
  std::thread thread_;
};

// Passes however the two threads meet: an answer that is there at once is not waited for.
TEST_F(ConversationTest, SlowAnswerIsWaitedForAlsoWhenNobodyLooks) {
  helper->answersAtOnce = false;
  SlowAnswer answer;
  const Outcome outcome = with({milliseconds(0), milliseconds(0)}).ask([&](auto& proxy, auto& text, auto&) {
    proxy.ping(text);
    answer.give(helper->kept);
  });

  EXPECT_EQ(outcome, Outcome("at last"));
}

TEST_F(ConversationTest, WithinThePatienceNobodyLooks) {
  helper->answersAtOnce = false;
  SlowAnswer answer;
  int looks = 0;
  const Outcome outcome = with({std::chrono::hours(1), milliseconds(0)})
                              .ask(
                                  [&](auto& proxy, auto& text, auto&) {
                                    proxy.ping(text);
                                    answer.give(helper->kept);
                                  },
                                  [&] { ++looks; });

  EXPECT_EQ(outcome, Outcome("at last"));
  EXPECT_EQ(looks, 0);
}

TEST_F(ConversationTest, AfterTheFirstLookTheOtherPaceHolds) {
  helper->answersAtOnce = false;
  SlowAnswer answer;
  int looks = 0;
  const Outcome outcome = with({milliseconds(0), std::chrono::hours(1)}).ask(ping, [&] {
    if (++looks == 1) answer.give(helper->kept);
  });

  EXPECT_EQ(outcome, Outcome("at last"));
  EXPECT_EQ(looks, 2) << "one while it was waited for, and one when it was there";
}

TEST_F(ConversationTest, ARequestIsMadeOverOneConnection) {
  Conversation conversation = with();
  conversation.ask(ping);
  conversation.ask(ping);

  EXPECT_EQ(connections, 1);
}

TEST_F(ConversationTest, ARequestThatWasCutOffIsNotMadeAgain) {
  const Outcome outcome = with().ask(answering({kInterrupted, "pong"}));

  EXPECT_EQ(outcome, Outcome(kInterrupted));
  EXPECT_EQ(connections, 1);
}

struct RepeatRow {
  const char* name;
  std::deque<Outcome> outcomes;
  Outcome expected;
  int connections;
};

class RequestThatChangesNothing : public ConversationTest, public testing::WithParamInterface<RepeatRow> {};

TEST_P(RequestThatChangesNothing, IsMadeOnceMoreOnAFreshConnectionWhereTheFirstOneEnded) {
  const Outcome outcome = with().askRepeatably(answering(GetParam().outcomes));

  EXPECT_EQ(outcome, GetParam().expected);
  EXPECT_EQ(connections, GetParam().connections);
}

INSTANTIATE_TEST_SUITE_P(Table, RequestThatChangesNothing,
                         testing::Values(RepeatRow{"Answered", {"pong", "never"}, "pong", 1},
                                         RepeatRow{"Interrupted", {kInterrupted, "pong", "never"}, "pong", 2},
                                         RepeatRow{"ClosedBeforeItWasTaken", {kUnreachable, "pong"}, "pong", 2},
                                         RepeatRow{"Twice", {kInterrupted, kUnreachable, "never"}, kUnreachable, 2},
                                         RepeatRow{"Rejected", {kRejected, "never"}, kRejected, 1}),
                         [](const auto& row) { return std::string(row.param.name); });

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
