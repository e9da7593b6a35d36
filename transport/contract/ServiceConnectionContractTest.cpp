// Who is admitted, what belongs to a connection, and what its client is told when there is none.
#include <unistd.h>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include "transport/contract/ServiceContract.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

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
