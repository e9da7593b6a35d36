#include "transport/mac/PendingCalls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const ServiceFailure kLost{ServiceFailure::Kind::interrupted, "lost"};

struct Recorder {
  std::vector<std::string> answers;

  std::shared_ptr<PendingCall> newCall() {
    return std::make_shared<PendingCall>(
        [this](const ServiceFailure& failure) { answers.push_back("failed: " + failure.description); });
  }
};

TEST(PendingCallTest, TheFirstReplyCounts) {
  Recorder recorder;
  const auto call = recorder.newCall();

  call->settle([&] { recorder.answers.emplace_back("first"); });
  call->settle([&] { recorder.answers.emplace_back("second"); });

  EXPECT_THAT(recorder.answers, ElementsAre("first"));
}

TEST(PendingCallTest, AFailureAfterTheReplyIsDropped) {
  Recorder recorder;
  const auto call = recorder.newCall();

  call->settle([&] { recorder.answers.emplace_back("reply"); });
  call->fail(kLost);

  EXPECT_THAT(recorder.answers, ElementsAre("reply"));
}

TEST(PendingCallTest, AReplyAfterTheFailureIsDropped) {
  Recorder recorder;
  const auto call = recorder.newCall();

  call->fail(kLost);
  call->settle([&] { recorder.answers.emplace_back("reply"); });

  EXPECT_THAT(recorder.answers, ElementsAre("failed: lost"));
}

TEST(PendingCallTest, ACallWithoutFailureHandlerFailsSilently) {
  const auto call = std::make_shared<PendingCall>(nullptr);

  EXPECT_NO_THROW(call->fail(kLost));
}

TEST(PendingCallTest, FailingWaitsForTheReplyThatIsBeingDelivered) {
  Recorder recorder;
  const auto call = recorder.newCall();
  std::promise<void> delivering;
  std::promise<void> mayEnd;
  std::atomic<bool> delivered = false;
  std::thread replying([&] {
    call->settle([&] {
      delivering.set_value();
      mayEnd.get_future().wait();
      delivered = true;
    });
  });
  delivering.get_future().wait();

  auto deliveredWhenFailReturned = std::async(std::launch::async, [&] {
    call->fail(kLost);
    return delivered.load();
  });
  // Long enough for a failure that does not wait to return too early.
  EXPECT_EQ(deliveredWhenFailReturned.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
  mayEnd.set_value();

  EXPECT_TRUE(deliveredWhenFailReturned.get());
  replying.join();
}

TEST(PendingCallsTest, EveryWaitingCallFails) {
  Recorder recorder;
  PendingCalls calls;
  const auto first = recorder.newCall();
  const auto second = recorder.newCall();
  calls.add(first);
  calls.add(second);

  calls.failAll(kLost);

  EXPECT_THAT(recorder.answers, ElementsAre("failed: lost", "failed: lost"));
}

TEST(PendingCallsTest, ACallThatNobodyHoldsIsForgotten) {
  Recorder recorder;
  PendingCalls calls;
  calls.add(recorder.newCall());

  calls.failAll(kLost);

  EXPECT_THAT(recorder.answers, IsEmpty());
}

// Adds `count` calls that count their failures, and keeps them.
std::vector<std::shared_ptr<PendingCall>> addCalls(PendingCalls& calls, int count, std::atomic<int>& failures) {
  std::vector<std::shared_ptr<PendingCall>> added;
  for (int i = 0; i < count; ++i) {
    added.push_back(std::make_shared<PendingCall>([&](const ServiceFailure&) { ++failures; }));
    calls.add(added.back());
  }
  return added;
}

TEST(PendingCallsTest, CallsOfTwoThreadsAllFail) {
  PendingCalls calls;
  std::atomic<int> failures = 0;
  auto first = std::async(std::launch::async, [&] { return addCalls(calls, 3000, failures); });
  auto second = std::async(std::launch::async, [&] { return addCalls(calls, 3000, failures); });
  const auto kept = first.get();
  const auto keptToo = second.get();

  calls.failAll(kLost);

  EXPECT_EQ(failures, 6000);
}

TEST(PendingCallsTest, CallsThatAreAddedWhileOthersFailAreNotLost) {
  PendingCalls calls;
  std::atomic<int> failures = 0;
  std::atomic<bool> adding = true;
  std::thread failing([&] {
    while (adding) calls.failAll(kLost);
  });

  const auto kept = addCalls(calls, 20000, failures);
  adding = false;
  failing.join();
  calls.failAll(kLost);

  EXPECT_EQ(failures, 20000);
}

TEST(PendingCallsTest, AFailureHandlerMayAddAnotherCall) {
  PendingCalls calls;
  int failures = 0;
  const auto later = std::make_shared<PendingCall>([&](const ServiceFailure&) { ++failures; });
  const auto first = std::make_shared<PendingCall>([&](const ServiceFailure&) { calls.add(later); });
  calls.add(first);

  calls.failAll(kLost);
  EXPECT_EQ(failures, 0);
  calls.failAll(kLost);

  EXPECT_EQ(failures, 1);
}

TEST(PendingCallsTest, AFailureHandlerMayEndEverythingAgain) {
  PendingCalls calls;
  int failures = 0;
  const auto call = std::make_shared<PendingCall>([&](const ServiceFailure&) {
    ++failures;
    calls.failAll(kLost);
  });
  calls.add(call);

  calls.failAll(kLost);

  EXPECT_EQ(failures, 1);
}

}  // namespace
}  // namespace halvo
