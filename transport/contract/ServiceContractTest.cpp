// Messages and their answers, on a service that admits its client.
#include <thread>

#include "transport/contract/ServiceContract.h"

namespace halvo {
namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::TestParamInfo;
using testing::Values;

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
  proxy->enumerateActiveGuiDomains(answers.text());
  ASSERT_EQ(answers.next(), "text enumerateActiveGuiDomains");
  proxy->ping(answers.text());

  EXPECT_THAT(answers.next(), AnyOf("rejected", "interrupted"));
}

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

}  // namespace
}  // namespace halvo
