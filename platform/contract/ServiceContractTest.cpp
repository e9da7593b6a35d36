#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <future>
#include <mutex>
#include <thread>

#include "platform/contract/AdmittingDelegate.h"
#include "platform/contract/Answers.h"
#include "platform/contract/PublishedMachService.h"
#include "platform/contract/ScriptedHandler.h"
#include "platform/service/ServiceClient.h"

namespace halvo {
namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::TestParamInfo;
using testing::Values;

constexpr auto kLongEnough = std::chrono::seconds(30);

// A published service whose delegate admits everybody, all connections sharing one handler, and one client.
class ServiceContract : public testing::Test {
 protected:
  ServiceContract() {
    publish([this] { return handler; });
  }

  void publish(AdmittingDelegate::HandlerFactory makeHandler) {
    listener.reset();
    delegate = std::make_shared<AdmittingDelegate>(std::move(makeHandler));
    listener = ServiceListener::forMachService(service.name());
    listener->setDelegate(delegate);
    listener->resume();
  }

  std::unique_ptr<ServiceClient> newClient() { return ServiceClient::forMachService(service.name()); }

  // Waits until every earlier message of the client has been handled.
  std::string pingAndWait() {
    proxy->ping(answers.text());
    return answers.next();
  }

  PublishedMachService service;
  std::shared_ptr<ScriptedHandler> handler = std::make_shared<ScriptedHandler>();
  std::shared_ptr<AdmittingDelegate> delegate;
  std::unique_ptr<ServiceListener> listener;
  Answers answers;
  std::unique_ptr<ServiceClient> client = newClient();
  std::shared_ptr<HalvoHelperProtocol> proxy = client->proxy(answers.failure());
};

TEST_F(ServiceContract, ReplyComesBackToTheCaller) {
  proxy->ping(answers.text());

  EXPECT_EQ(answers.next(), "text ping");
}

struct MessageRow {
  const char* name;
  void (*send)(HalvoHelperProtocol&, const Answers&);
  const char* call;
  const char* answer;
};

class ServiceMessage : public ServiceContract, public testing::WithParamInterface<MessageRow> {};

TEST_P(ServiceMessage, ArrivesWithItsArgumentsAndIsAnswered) {
  GetParam().send(*proxy, answers);

  EXPECT_EQ(answers.next(), GetParam().answer);
  EXPECT_THAT(handler->calls(), ElementsAre(GetParam().call));
}

const AuthorizationBlob kForm(32, std::byte{7});

INSTANTIATE_TEST_SUITE_P(
    Table, ServiceMessage,
    Values(MessageRow{"Ping", [](auto& helper, auto& answers) { helper.ping(answers.text()); }, "ping", "text ping"},
           MessageRow{"EnumerateActiveGuiDomains",
                      [](auto& helper, auto& answers) { helper.enumerateActiveGuiDomains(answers.text()); },
                      "enumerateActiveGuiDomains", "text enumerateActiveGuiDomains"},
           MessageRow{"PrepareForRemovalOfTheFirstGeneration",
                      [](auto& helper, auto& answers) { helper.prepareForRemoval(true, answers.text()); },
                      "prepareForRemoval acceptAudioInterruption=true",
                      "text prepareForRemoval acceptAudioInterruption=true"},
           MessageRow{"RemoveAppBundleOfTheFirstGeneration",
                      [](auto& helper, auto& answers) { helper.removeAppBundle("/a b", answers.boolean()); },
                      "removeAppBundle path=/a b", "true"},
           MessageRow{"InstallSystemPkgOfTheFirstGeneration",
                      [](auto& helper, auto& answers) { helper.installSystemPkg("/p", "{}", false, answers.text()); },
                      "installSystemPkg pkgPath=/p manifestJSON=2 acceptAudioInterruption=false", "text {}"},
           MessageRow{"PrepareForRemoval",
                      [](auto& helper, auto& answers) { helper.prepareForRemoval(kForm, false, answers.text()); },
                      "prepareForRemoval authorization=32 acceptAudioInterruption=false",
                      "text prepareForRemoval authorization=32 acceptAudioInterruption=false"},
           MessageRow{"RemoveAppBundle",
                      [](auto& helper, auto& answers) { helper.removeAppBundle(kForm, "", answers.boolean()); },
                      "removeAppBundle authorization=32 path=", "false"},
           MessageRow{"FinalizeRemoval",
                      [](auto& helper, auto& answers) { helper.finalizeRemoval(kForm, answers.boolean()); },
                      "finalizeRemoval authorization=32", "true"},
           MessageRow{"InstallSystemPkg",
                      [](auto& helper, auto& answers) {
                        helper.installSystemPkg(kForm, "/p", "{\"a\":1}", true, answers.text());
                      },
                      "installSystemPkg authorization=32 pkgPath=/p manifestJSON=7 acceptAudioInterruption=true",
                      "text {\"a\":1}"}),
    [](const TestParamInfo<MessageRow>& row) { return row.param.name; });

TEST_F(ServiceContract, MessageWithoutReplyArrives) {
  proxy->finalizeRemoval();

  EXPECT_EQ(pingAndWait(), "text ping");
  EXPECT_THAT(handler->calls(), ElementsAre("finalizeRemoval", "ping"));
  EXPECT_THAT(answers.rest(), IsEmpty());
}

TEST_F(ServiceContract, TextOfAMegabyteWithEmojiComesBackUnchanged) {
  const std::string manifest = std::string(std::size_t{1024} * 1024, 'x') + "\U0001F3A7 \"quoted\\\n\t é";
  proxy->installSystemPkg("/p", manifest, false, answers.text());

  EXPECT_EQ(answers.next(), "text " + manifest);
}

TEST_F(ServiceContract, DataOfAnyLengthArrivesUnchanged) {
  AuthorizationBlob form(31, std::byte{0xFF});
  form[0] = std::byte{0};
  proxy->finalizeRemoval(form, answers.boolean());

  EXPECT_EQ(answers.next(), "true");
  EXPECT_EQ(handler->lastAuthorization(), form);
}

TEST_F(ServiceContract, EmptyDataArrivesAsEmptyData) {
  proxy->finalizeRemoval(AuthorizationBlob{}, answers.boolean());

  EXPECT_EQ(answers.next(), "true");
  EXPECT_THAT(handler->calls(), ElementsAre("finalizeRemoval authorization=0"));
}

TEST_F(ServiceContract, MessagesOfOneClientAreAnsweredInTheirOrder) {
  proxy->prepareForRemoval(true, answers.text());
  proxy->ping(answers.text());
  proxy->removeAppBundle("", answers.boolean());
  proxy->enumerateActiveGuiDomains(answers.text());

  EXPECT_EQ(answers.next(), "text prepareForRemoval acceptAudioInterruption=true");
  EXPECT_EQ(answers.next(), "text ping");
  EXPECT_EQ(answers.next(), "false");
  EXPECT_EQ(answers.next(), "text enumerateActiveGuiDomains");
}

TEST_F(ServiceContract, TwoProxiesOfOneClientShareItsConnection) {
  client->proxy(answers.failure())->ping(answers.text());
  const std::string first = answers.next();
  const std::string second = pingAndWait();

  EXPECT_EQ(first, "text ping");
  EXPECT_EQ(second, "text ping");
  EXPECT_THAT(delegate->visitors(), SizeIs(1));
}

TEST_F(ServiceContract, NobodyConnectsBeforeTheFirstMessage) {
  const auto idle = newClient();

  EXPECT_EQ(pingAndWait(), "text ping");
  EXPECT_THAT(delegate->visitors(), SizeIs(1));
}

TEST_F(ServiceContract, ReplyMayComeFromAnotherThreadAndLater) {
  const auto pending = std::make_shared<std::promise<TextReply>>();
  handler->onPing = [pending](const TextReply& reply) { pending->set_value(reply); };
  auto reply = pending->get_future();
  proxy->ping(answers.text());

  ASSERT_EQ(reply.wait_for(kLongEnough), std::future_status::ready);
  std::thread([later = reply.get()] { later("later"); }).join();

  EXPECT_EQ(answers.next(), "text later");
}

TEST_F(ServiceContract, SecondReplyToAMessageIsIgnored) {
  handler->onPing = [](const TextReply& reply) {
    reply("first");
    reply("second");
  };
  proxy->ping(answers.text());
  proxy->enumerateActiveGuiDomains(answers.text());

  EXPECT_EQ(answers.next(), "text first");
  EXPECT_EQ(answers.next(), "text enumerateActiveGuiDomains");
}

TEST_F(ServiceContract, MessageThatTheHandlerDropsFails) {
  handler->onPing = [](const TextReply&) {};
  proxy->ping(answers.text());

  EXPECT_THAT(answers.next(), AnyOf("rejected", "interrupted"));
}

// Holds the handler inside ping() until told to go on.
class HeldPing {
 public:
  explicit HeldPing(ScriptedHandler& handler) {
    handler.onPing = [entered = entered_.text(), released = release_.get_future().share()](const TextReply& reply) {
      entered("entered");
      released.wait_for(kLongEnough);
      reply("released");
    };
  }

  std::string waitUntilEntered() { return entered_.next(); }
  void release() { release_.set_value(); }

 private:
  Answers entered_;
  std::promise<void> release_;
};

TEST_F(ServiceContract, MessagesOfOneClientAreHandledOneAtATime) {
  HeldPing held(*handler);
  proxy->ping(answers.text());
  proxy->enumerateActiveGuiDomains(answers.text());
  ASSERT_EQ(held.waitUntilEntered(), "text entered");

  const auto callsMeanwhile = handler->calls();
  held.release();

  EXPECT_THAT(callsMeanwhile, ElementsAre("ping"));
  EXPECT_EQ(answers.next(), "text released");
  EXPECT_EQ(answers.next(), "text enumerateActiveGuiDomains");
}

TEST_F(ServiceContract, MessagesOfDifferentClientsAreHandledAtTheSameTime) {
  HeldPing held(*handler);
  proxy->ping(answers.text());
  ASSERT_EQ(held.waitUntilEntered(), "text entered");
  const auto other = newClient();
  Answers otherAnswers;
  other->proxy(otherAnswers.failure())->enumerateActiveGuiDomains(otherAnswers.text());

  EXPECT_EQ(otherAnswers.next(), "text enumerateActiveGuiDomains");
  held.release();
  EXPECT_EQ(answers.next(), "text released");
}

TEST_F(ServiceContract, RefusedClientFindsTheServiceUnreachable) {
  publish([] { return nullptr; });
  proxy->ping(answers.text());

  EXPECT_EQ(answers.next(), "unreachable");
  EXPECT_THAT(handler->calls(), IsEmpty());
  EXPECT_THAT(answers.rest(), IsEmpty());
}

TEST_F(ServiceContract, AfterARefusedClientTheNextOneIsServed) {
  std::atomic<int> visits{0};
  publish([&]() -> std::shared_ptr<HalvoHelperProtocol> {
    if (visits++ == 0) return nullptr;
    return handler;
  });
  proxy->ping(answers.text());
  ASSERT_EQ(answers.next(), "unreachable");
  const auto other = newClient();
  other->proxy(answers.failure())->ping(answers.text());

  EXPECT_EQ(answers.next(), "text ping");
}

TEST_F(ServiceContract, DelegateIsAskedAboutOneClientAtATime) {
  std::atomic<int> inside{0};
  std::atomic<bool> overlapped{false};
  publish([&] {
    if (inside++ != 0) overlapped = true;
    std::this_thread::yield();
    inside--;
    return handler;
  });
  const auto second = newClient();
  const auto third = newClient();
  proxy->ping(answers.text());
  second->proxy(answers.failure())->ping(answers.text());
  third->proxy(answers.failure())->ping(answers.text());

  EXPECT_EQ(answers.next(), "text ping");
  EXPECT_EQ(answers.next(), "text ping");
  EXPECT_EQ(answers.next(), "text ping");
  EXPECT_FALSE(overlapped);
}

TEST_F(ServiceContract, EveryConnectionHasAHandlerOfItsOwn) {
  std::mutex mutex;
  std::vector<std::shared_ptr<ScriptedHandler>> made;  // guarded by mutex
  publish([&] {
    const std::lock_guard lock(mutex);
    return made.emplace_back(std::make_shared<ScriptedHandler>());
  });
  const auto other = newClient();
  ASSERT_EQ(pingAndWait(), "text ping");
  other->proxy(answers.failure())->enumerateActiveGuiDomains(answers.text());
  ASSERT_EQ(answers.next(), "text enumerateActiveGuiDomains");

  const std::lock_guard lock(mutex);
  ASSERT_THAT(made, SizeIs(2));
  EXPECT_THAT(made[0]->calls(), ElementsAre("ping"));
  EXPECT_THAT(made[1]->calls(), ElementsAre("enumerateActiveGuiDomains"));
}

// Says when it goes.
class MortalHandler final : public HalvoHelperProtocol {
 public:
  explicit MortalHandler(TextReply onGone) : onGone_(std::move(onGone)) {}
  ~MortalHandler() override { onGone_("gone"); }
  MortalHandler(const MortalHandler&) = delete;
  MortalHandler& operator=(const MortalHandler&) = delete;

  void ping(const TextReply& reply) override { reply("mortal"); }
  void enumerateActiveGuiDomains(const TextReply& reply) override { reply(""); }
  void prepareForRemoval(bool, const TextReply& reply) override { reply(""); }
  void removeAppBundle(const std::string&, const BoolReply& reply) override { reply(false); }
  void finalizeRemoval() override {}
  void installSystemPkg(const std::string&, const std::string&, bool, const TextReply& reply) override { reply(""); }
  void prepareForRemoval(const AuthorizationBlob&, bool, const TextReply& reply) override { reply(""); }
  void removeAppBundle(const AuthorizationBlob&, const std::string&, const BoolReply& reply) override { reply(false); }
  void finalizeRemoval(const AuthorizationBlob&, const BoolReply& reply) override { reply(false); }
  void installSystemPkg(const AuthorizationBlob&, const std::string&, const std::string&, bool,
                        const TextReply& reply) override {
    reply("");
  }

 private:
  const TextReply onGone_;
};

TEST_F(ServiceContract, HandlerGoesWithItsConnection) {
  publish([onGone = answers.text()] { return std::make_shared<MortalHandler>(onGone); });
  ASSERT_EQ(pingAndWait(), "text mortal");

  client.reset();

  EXPECT_EQ(answers.next(), "text gone");
}

TEST_F(ServiceContract, TokenAndNumberNameTheProcessThatConnected) {
  ASSERT_EQ(pingAndWait(), "text ping");

  const auto visitors = delegate->visitors();
  ASSERT_THAT(visitors, SizeIs(1));
  EXPECT_EQ(visitors[0].pid, ::getpid());
  EXPECT_EQ(visitors[0].token.val[1], ::geteuid());
  EXPECT_EQ(visitors[0].token.val[2], ::getegid());
  EXPECT_EQ(visitors[0].token.val[5], static_cast<unsigned>(::getpid()));
  EXPECT_NE(visitors[0].token.val[7], 0U);
}

TEST_F(ServiceContract, ServiceThatNobodyPublishesIsUnreachable) {
  const auto lost = ServiceClient::forMachService("com.halvo.nobody-publishes-this");
  lost->proxy(answers.failure())->ping(answers.text());

  EXPECT_EQ(answers.next(), "unreachable");
}

TEST_F(ServiceContract, MessageWithoutReplyThatCannotBeSentFails) {
  const auto lost = ServiceClient::forMachService("com.halvo.nobody-publishes-this");
  lost->proxy(answers.failure())->finalizeRemoval();

  EXPECT_EQ(answers.next(), "unreachable");
}

TEST_F(ServiceContract, WaitingMessageFailsBeforeItsClientIsGone) {
  HeldPing held(*handler);
  proxy->ping(answers.text());
  ASSERT_EQ(held.waitUntilEntered(), "text entered");

  client.reset();
  const auto lines = answers.rest();
  held.release();

  EXPECT_THAT(lines, ElementsAre("interrupted"));
}

TEST_F(ServiceContract, MessageAfterItsClientIsGoneFails) {
  client.reset();
  proxy->ping(answers.text());

  EXPECT_NE(answers.next(), "nothing came");
}

TEST_F(ServiceContract, ClientMayBeDestroyedByAnAnswer) {
  proxy->ping([this, after = answers.text()](const std::string&) {
    client.reset();
    after("destroyed");
  });

  EXPECT_EQ(answers.next(), "text destroyed");
}

TEST_F(ServiceContract, AnswerMaySendTheNextMessage) {
  proxy->ping([&](const std::string&) { proxy->enumerateActiveGuiDomains(answers.text()); });

  EXPECT_EQ(answers.next(), "text enumerateActiveGuiDomains");
}

}  // namespace
}  // namespace halvo
