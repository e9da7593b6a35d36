// Listener and client of the Mac when all goes well, through the doubles.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mac-checks/objc/doubles/SerialQueue.h"
#import "mac-checks/objc/doubles/XPCDoubleWorld.h"
#include "mac-checks/objc/tests/ServiceFixture.h"

namespace halvo::sim {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

TEST_F(ServiceTest, APingIsAnswered) { EXPECT_EQ(pinged(), "text {}"); }

TEST_F(ServiceTest, TheListenerKeepsItsDelegateAlive) {
  listener_->setDelegate(std::make_shared<ScriptedDelegate>());

  EXPECT_EQ(pinged(), "text {}");
}

TEST_F(ServiceTest, TheDelegateSeesTheClientsToken) {
  pinged();

  EXPECT_TRUE(sameToken(delegate_->seen, kSampleToken));
}

TEST_F(ServiceTest, EveryMethodCarriesItsArgumentsInOrder) {
  const AuthorizationBlob blob = {std::byte{'o'}, std::byte{'k'}};
  Answer last;
  const auto ignoreText = [](const std::string&) {};
  const auto ignoreBool = [](bool) {};
  const auto helper = client_->proxy([](const ServiceFailure& failure) { FAIL() << failure.description; });

  helper->ping(ignoreText);
  helper->enumerateActiveGuiDomains(ignoreText);
  helper->prepareForRemoval(true, ignoreText);
  helper->removeAppBundle("/a", ignoreBool);
  helper->finalizeRemoval();
  helper->installSystemPkg("/p", "{}", true, ignoreText);
  helper->prepareForRemoval(blob, true, ignoreText);
  helper->removeAppBundle(blob, "/a", ignoreBool);
  helper->finalizeRemoval(blob, ignoreBool);
  helper->installSystemPkg(blob, "/p", "{}", false, last.text());

  EXPECT_EQ(last.get(), "text {}");
  EXPECT_THAT(delegate_->handler->calls,
              ElementsAre("ping", "enumerateActiveGuiDomains", "prepareForRemoval accept=1", "removeAppBundle path=/a",
                          "finalizeRemoval", "installSystemPkg pkgPath=/p manifest={} accept=1",
                          "prepareForRemoval authorization=ok accept=1", "removeAppBundle authorization=ok path=/a",
                          "finalizeRemoval authorization=ok",
                          "installSystemPkg authorization=ok pkgPath=/p manifest={} accept=0"));
}

TEST_F(ServiceTest, BooleanRepliesCarryTheirValue) {
  Answer yes;
  Answer no;
  client_->proxy(yes.failure())->removeAppBundle("/a", yes.boolean());
  EXPECT_EQ(yes.get(), "true");
  delegate_->handler->boolAnswer = false;

  client_->proxy(no.failure())->removeAppBundle("/a", no.boolean());

  EXPECT_EQ(no.get(), "false");
}

TEST_F(ServiceTest, ManyMessagesAreAnsweredInOrder) {
  Answer last;
  std::vector<int> answered;
  const auto helper = client_->proxy(last.failure());
  const auto sendNumbered = [&](int number) {
    helper->ping([&, number](const std::string&) { answered.push_back(number); });
  };
  sendNumbered(1);
  sendNumbered(2);
  sendNumbered(3);

  helper->ping(last.text());

  EXPECT_EQ(last.get(), "text {}");
  EXPECT_THAT(answered, ElementsAre(1, 2, 3));
}

TEST_F(ServiceTest, AnEndedClientIsNoLongerServed) {
  pinged();
  ASSERT_EQ(openDoubleConnections(kService), 1U);

  client_.reset();

  EXPECT_EQ(openDoubleConnections(kService), 0U);
}

TEST_F(ServiceTest, AnEndedListenerIsNotAskedAgainThoughTheSystemKeepsIt) {
  NSXPCListener* const kept = listenerNamed(kService);
  ASSERT_NE(kept, nil);

  listener_.reset();

  EXPECT_EQ(listenerNamed(kService), nil);
  EXPECT_THAT(pinged(), StartsWith("unreachable"));
}

TEST(ServiceOwnershipTest, AfterListenerAndClientEndNoThreadAndNoHandlerIsLeft) {
  std::weak_ptr<RecordingHandler> handler;
  @autoreleasepool {
    setDoubleClientIdentity(boxed(kSampleToken), 4711);
    const auto delegate = std::make_shared<ScriptedDelegate>();
    handler = delegate->handler;
    const auto listener = ServiceListener::forMachService(kService);
    listener->setDelegate(delegate);
    listener->resume();
    const auto client = ServiceClient::forMachService(kService);
    Answer answer;
    client->proxy(answer.failure())->ping(answer.text());
    ASSERT_EQ(answer.get(), "text {}");
  }
  waitForSerialQueues();

  EXPECT_TRUE(handler.expired());
}

}  // namespace
}  // namespace halvo::sim
