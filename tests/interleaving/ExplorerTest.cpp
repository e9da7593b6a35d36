// The search itself, on requests so small that their schedules can be counted by hand.
#include "tests/interleaving/Explorer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>

namespace halvo::interleaving {
namespace {

using testing::ElementsAre;
using testing::Eq;

// Requests that write their letter where everybody can read it.
class Letters final : public Scene {
 public:
  using Request = std::function<void(Letters&)>;

  Letters(std::vector<Request> requests, std::string forbidden)
      : requests_(std::move(requests)), forbidden_(std::move(forbidden)) {}

  std::vector<std::function<void()>> requests() override {
    std::vector<std::function<void()>> work;
    for (const Request& request : requests_) work.emplace_back([this, &request] { request(*this); });
    return work;
  }
  std::string state() const override { return written_; }
  std::optional<std::string> violation() const override {
    return !forbidden_.empty() && written_.ends_with(forbidden_) ? std::optional(written_) : std::nullopt;
  }
  std::vector<std::string> story() const override { return {written_}; }

  void write(char letter) {
    if (Turns::boundary()) written_ += letter;
  }

  std::mutex lock;

 private:
  std::vector<Request> requests_;
  std::string forbidden_;
  std::string written_;
};

void twoAs(Letters& letters) {
  letters.write('a');
  letters.write('a');
}

void twoBs(Letters& letters) {
  letters.write('b');
  letters.write('b');
}

void lockedAs(Letters& letters) {
  const std::scoped_lock guard(letters.lock);
  twoAs(letters);
}

void lockedBs(Letters& letters) {
  const std::scoped_lock guard(letters.lock);
  twoBs(letters);
}

Explorer::SceneMaker letters(const std::vector<Letters::Request>& requests, const std::string& forbidden = "") {
  return [=] { return std::make_unique<Letters>(requests, forbidden); };
}

// A request with two calls has three turns: up to the first, up to the second, and to the end.
TEST(ExplorerTest, CountsEverySchedule) {
  EXPECT_THAT(Explorer(letters({twoAs})).run().schedules, Eq(1));
  EXPECT_THAT(Explorer(letters({twoAs, twoBs})).run().schedules, Eq(20));
  EXPECT_THAT(Explorer(letters({twoAs, twoBs, twoAs})).run().schedules, Eq(1680));
}

TEST(ExplorerTest, ExploresNoStateTwice) {
  const Exploration result = Explorer(letters({twoAs, twoAs})).run();

  EXPECT_THAT(result.schedules, Eq(20));
  EXPECT_THAT(result.states, Eq(15u));
  EXPECT_THAT(result.executions, Eq(10u));
}

TEST(ExplorerTest, CountsOnlySchedulesWithinTheBound) {
  EXPECT_THAT(Explorer(letters({twoAs, twoBs}), 0).run().schedules, Eq(2));
  EXPECT_THAT(Explorer(letters({twoAs, twoBs}), 1).run().schedules, Eq(6));
  EXPECT_THAT(Explorer(letters({twoAs, twoBs}), 4).run().schedules, Eq(20));
}

TEST(ExplorerTest, FindsTheOneOrderThatIsForbidden) {
  const Exploration result = Explorer(letters({twoAs, twoBs}, "abba")).run();

  EXPECT_THAT(result.violation, Eq("abba"));
  EXPECT_THAT(result.story, ElementsAre("abba"));
}

TEST(ExplorerTest, FindsNothingThatTakesMorePreemptionsThanTheBound) {
  EXPECT_THAT(Explorer(letters({twoAs, twoBs}, "baba"), 1).run().violation, Eq(std::nullopt));
  EXPECT_THAT(Explorer(letters({twoAs, twoBs}, "baba"), 2).run().violation, Eq("baba"));
}

TEST(ExplorerTest, FindsTheSimplestScheduleFirst) {
  EXPECT_THAT(Explorer::findSimplest(letters({twoAs, twoBs}, "ba"), 3).violation, Eq("bba"));
}

TEST(ExplorerTest, ARequestThatWaitsForAMutexHasNoTurn) {
  EXPECT_THAT(Explorer(letters({lockedAs, lockedBs}, "ab")).run().violation, Eq("aab"));
  EXPECT_THAT(Explorer(letters({lockedAs, lockedBs}, "aba")).run().violation, Eq(std::nullopt));
  EXPECT_THAT(Explorer(letters({lockedAs, lockedBs}, "bab")).run().violation, Eq(std::nullopt));
}

TEST(ExplorerTest, AMutexThatOnlyOneTakesKeepsNobodyOut) {
  EXPECT_THAT(Explorer(letters({lockedAs, twoBs}, "aba")).run().violation, Eq("aba"));
}

}  // namespace
}  // namespace halvo::interleaving
