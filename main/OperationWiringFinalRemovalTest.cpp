// The helper's own end, as the wiring puts it together.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "main/WiringBench.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class WiredFinalRemovalTest : public WiringBench {
 protected:
  void runWhatWaits() { laterWork_.front()(); }
};

TEST_F(WiredFinalRemovalTest, BeginsThreeTenthsOfASecondLater) {
  wiring()->finalizeRemoval();

  EXPECT_THAT(calls(), ElementsAre("after 300 ms"));
  EXPECT_THAT(systemLog_.lines(), IsEmpty());
}

TEST_F(WiredFinalRemovalTest, UnregistersBootsOutAndExits) {
  wiring()->finalizeRemoval();

  runWhatWaits();

  EXPECT_THAT(calls(), ElementsAre("after 300 ms", "unregister com.halvo.helper.plist",
                                   "run /bin/launchctl bootout system/com.halvo.helper", "exit"));
  EXPECT_THAT(systemLog_.lines(), ElementsAre("halvo-helper: finalized, booting out com.halvo.helper",
                                              "halvo-helper: bootout returned 0, exiting"));
}

TEST_F(WiredFinalRemovalTest, GoesOnWhenUnregisteringFails) {
  unregisterFailure_ = "Operation not permitted";
  wiring()->finalizeRemoval();

  runWhatWaits();

  EXPECT_EQ(calls().back(), "exit");
  EXPECT_THAT(systemLog_.lines(), ElementsAre("halvo-helper: SMAppService unregister failed: Operation not permitted",
                                              "halvo-helper: finalized, booting out com.halvo.helper",
                                              "halvo-helper: bootout returned 0, exiting"));
}

TEST_F(WiredFinalRemovalTest, ExitsWhenLaunchdKnowsNoSuchJob) {
  runner_->replies = {{113, ""}};
  wiring()->finalizeRemoval();

  runWhatWaits();

  EXPECT_EQ(calls().back(), "exit");
  EXPECT_EQ(systemLog_.lines().back(), "halvo-helper: bootout returned 113, exiting");
}

TEST_F(WiredFinalRemovalTest, AnswersTheClientFirst) {
  wiring()->makeHandler()->finalizeRemoval(
      kBlob, [this](bool done) { recorder_->calls.emplace_back(done ? "reply true" : "reply false"); });

  EXPECT_THAT(calls(), ElementsAre("reply true", "after 300 ms"));
}

TEST_F(WiredFinalRemovalTest, OutlivesTheConnectionThatAskedForIt) {
  wiring()->makeHandler()->finalizeRemoval(kBlob, [](bool) {});

  runWhatWaits();

  EXPECT_EQ(calls().back(), "exit");
}

}  // namespace
}  // namespace halvo
