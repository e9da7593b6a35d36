// What a client of the Mac is told when something goes wrong, through the doubles.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mac-checks/objc/doubles/SerialQueue.h"
#include "mac-checks/objc/tests/ServiceFixture.h"

namespace halvo::sim {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

using ServiceFailureTest = ServiceTest;

TEST_F(ServiceFailureTest, ARefusedClientFindsTheServiceUnreachable) {
  delegate_->admits = false;

  EXPECT_THAT(pinged(), StartsWith("unreachable: "));
}

TEST_F(ServiceFailureTest, AServiceThatNobodyPublishesIsUnreachable) {
  listener_.reset();

  EXPECT_THAT(pinged(), StartsWith("unreachable: "));
}

TEST_F(ServiceFailureTest, AfterAnInvalidConnectionTheNextMessageConnectsAnew) {
  listener_.reset();
  pinged();
  publishAgain();

  EXPECT_EQ(pinged(), "text {}");
}

TEST_F(ServiceFailureTest, WhoTriesAgainWhileBeingToldOfTheFailureDoesNotGetTheDeadConnection) {
  listener_.reset();
  Answer second;
  const auto tryAgain = [&](const ServiceFailure&) {
    publishAgain();
    client_->proxy(second.failure())->ping(second.text());
  };

  client_->proxy(tryAgain)->ping([](const std::string&) {});

  EXPECT_EQ(second.get(), "text {}");
}

// The system tells of an invalid connection twice: to the messages that wait on it, then to itself.
TEST_F(ServiceFailureTest, WhoTriedAgainKeepsTheNewConnectionWhenTheEndOfTheOldOneIsTold) {
  Answer second;
  const auto tryAgain = [&](const ServiceFailure&) {
    client_->proxy(second.failure())->removeAppBundle("/", second.boolean());
  };
  delegate_->handler->keepsTextReplies = true;
  client_->proxy(tryAgain)->ping([](const std::string&) {});
  ASSERT_EQ(removed(), "true");

  giveUpDoubleConnections(kService);

  EXPECT_EQ(second.get(), "true");
  EXPECT_EQ(removed(), "true");
  EXPECT_EQ(delegate_->asked, 2);
}

TEST_F(ServiceFailureTest, AHelperThatEndsDuringACallInterruptsIt) {
  pinged();
  Answer answer;
  startUnansweredPing(answer);

  endDoubleService(kService);

  EXPECT_THAT(answer.get(), StartsWith("interrupted: "));
}

TEST_F(ServiceFailureTest, AfterAnInterruptionTheNextMessageConnectsAnew) {
  pinged();
  endDoubleService(kService);

  EXPECT_EQ(pinged(), "text {}");
}

TEST_F(ServiceFailureTest, ARefusalByTheHelperThatFollowsIsNoInterruption) {
  pinged();
  endDoubleService(kService);
  delegate_->admits = false;
  pinged();  // its answer comes after the news of the end

  EXPECT_THAT(pinged(), StartsWith("unreachable: "));
}

TEST_F(ServiceFailureTest, AfterAConnectionThatTheSystemGaveUpTheNextMessageConnectsAnew) {
  pinged();
  giveUpDoubleConnections(kService);

  EXPECT_EQ(pinged(), "text {}");
}

TEST_F(ServiceFailureTest, ARefusalAfterAConnectionThatTheSystemGaveUpIsNoInterruption) {
  pinged();
  giveUpDoubleConnections(kService);
  delegate_->admits = false;

  EXPECT_THAT(pinged(), StartsWith("unreachable: "));
}

TEST_F(ServiceFailureTest, AReplyAfterTheInterruptionIsDropped) {
  Answer answer;
  startUnansweredPing(answer);
  endDoubleService(kService);
  EXPECT_THAT(answer.get(), StartsWith("interrupted: "));

  delegate_->handler->textReplies.front()("too late");

  // The next answer comes on the same queue: by then the late one would have been given a second time, and thrown.
  EXPECT_EQ(removed(), "true");
}

TEST_F(ServiceFailureTest, AReplyAfterTheClientsEndIsDropped) {
  Answer answer;
  startUnansweredPing(answer);
  client_.reset();
  EXPECT_THAT(answer.get(), StartsWith("interrupted: "));

  delegate_->handler->textReplies.front()("too late");
  delegate_->handler->textReplies.clear();

  // Until the last queue has ended: a late answer would be given a second time there, and end the process.
  listener_.reset();
  waitForSerialQueues();
}

TEST_F(ServiceFailureTest, ErrorsOfOtherKindsRejectTheMessage) {
  failNextDoubleMessage([NSError errorWithDomain:NSCocoaErrorDomain
                                            code:NSXPCConnectionReplyInvalid
                                        userInfo:@{NSLocalizedDescriptionKey : @"reply did not match"}]);

  EXPECT_EQ(pinged(), "rejected: reply did not match");
}

TEST_F(ServiceFailureTest, AnErrorOfAnotherDomainRejectsTheMessage) {
  failNextDoubleMessage([NSError errorWithDomain:@"Other"
                                            code:NSXPCConnectionInvalid
                                        userInfo:@{NSLocalizedDescriptionKey : @"odd"}]);

  EXPECT_EQ(pinged(), "rejected: odd");
}

TEST_F(ServiceFailureTest, AnErrorWithoutATextIsDescribedAllTheSame) {
  failNextDoubleMessage([NSError errorWithDomain:@"Other" code:1 userInfo:@{NSLocalizedDescriptionKey : @""}]);

  EXPECT_EQ(pinged(), "rejected: The connection failed.");
}

TEST_F(ServiceFailureTest, AClientWhoseSignatureTheServiceRefusesFindsItUnreachable) {
  failNextDoubleMessage([NSError errorWithDomain:NSCocoaErrorDomain
                                            code:NSXPCConnectionCodeSigningRequirementFailure
                                        userInfo:@{NSLocalizedDescriptionKey : @"signature"}]);

  EXPECT_EQ(pinged(), "unreachable: signature");
}

TEST_F(ServiceFailureTest, ACallWhoseReplyTheHandlerDropsIsRejected) {
  Answer answer;
  startUnansweredPing(answer);

  delegate_->handler->textReplies.clear();

  EXPECT_THAT(answer.get(), StartsWith("rejected: "));
}

TEST_F(ServiceFailureTest, AHelperThatEndsBeforeItEverAnsweredIsUnreachable) {
  std::promise<void> arrived;
  delegate_->handler->keepsTextReplies = true;
  delegate_->handler->onTextCall = [&] { arrived.set_value(); };
  Answer answer;
  client_->proxy(answer.failure())->ping(answer.text());
  arrived.get_future().wait();

  endDoubleService(kService);

  EXPECT_THAT(answer.get(), StartsWith("unreachable: "));
}

TEST_F(ServiceFailureTest, EndingTheClientFailsWhatStillWaitsBeforeItReturns) {
  delegate_->handler->keepsTextReplies = true;
  std::vector<std::string> failures;
  client_->proxy([&](const ServiceFailure& failure) { failures.push_back(failure.description); })
      ->ping([](const std::string&) {});

  client_.reset();

  EXPECT_THAT(failures, ElementsAre("The connection was closed."));
}

TEST_F(ServiceFailureTest, AProxyThatOutlivesItsClientFailsAtOnce) {
  Answer answer;
  const auto helper = client_->proxy(answer.failure());
  client_.reset();

  helper->ping(answer.text());

  EXPECT_EQ(answer.get(), "unreachable: The connection was closed.");
}

TEST_F(ServiceFailureTest, AOneWayMessageThatCannotBeSentIsReported) {
  listener_.reset();
  Answer answer;

  client_->proxy(answer.failure())->finalizeRemoval();

  EXPECT_THAT(answer.get(), StartsWith("unreachable: "));
}

}  // namespace
}  // namespace halvo::sim
