// Whatever changes the machine keeps it from falling asleep meanwhile.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "HalvoHelper/testing/SignatureReports.h"
#include "main/WiringBench.h"

namespace halvo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

class OperationWakefulnessTest : public WiringBench {
 protected:
  OperationWakefulnessTest() { sleep_->recorder = recorder_; }
};

struct OperationRow {
  const char* name;
  void (*run)(const OperationWiring&);
};

class WakefulOperation : public OperationWakefulnessTest, public testing::WithParamInterface<OperationRow> {};

TEST_P(WakefulOperation, PreventsIdleSleepBeforeItsFirstStepAndAllowsItAfterItsLast) {
  runner_->replies = {{0, std::string(kGoodSignatureReport)}};

  GetParam().run(*wiring());

  EXPECT_EQ(calls().front(), "idle sleep prevented");
  EXPECT_EQ(calls().back(), "idle sleep allowed");
  EXPECT_EQ(std::ranges::count(calls(), "idle sleep prevented"), 1);
  EXPECT_EQ(std::ranges::count(calls(), "idle sleep allowed"), 1);
}

TEST_P(WakefulOperation, GoesOnWhereIdleSleepCannotBePrevented) {
  sleep_->refuses = true;
  runner_->replies = {{0, std::string(kGoodSignatureReport)}};

  GetParam().run(*wiring());

  EXPECT_THAT(calls(), Not(Contains("idle sleep allowed")));
  EXPECT_THAT(calls(), Contains(testing::StartsWith(GetParam().name)));
}

// Named by the beginning of a step that each takes.
INSTANTIATE_TEST_SUITE_P(
    Table, WakefulOperation,
    testing::Values(OperationRow{"stageFile", [](const OperationWiring& w) { w.runInstall("/tmp/a.pkg", "{}", true); }},
                    OperationRow{"removeTree", [](const OperationWiring& w) { w.runUninstall(true); }}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(OperationWakefulnessTest, AnInstallThatIsRefusedAllowsItAgain) {
  wiring()->runInstall("/tmp/a.pkg", "{}", true);

  EXPECT_EQ(calls().back(), "idle sleep allowed");
}

TEST_F(OperationWakefulnessTest, TheRemovalOfTheApplicationPreventsItToo) {
  wiring()->removeAppBundle("Halvo.app");

  EXPECT_THAT(calls(), ElementsAre("idle sleep prevented", "idle sleep allowed"));
}

TEST_F(OperationWakefulnessTest, TheFinalRemovalPreventsItWhenItBegins) {
  wiring()->finalizeRemoval();
  EXPECT_THAT(calls(), ElementsAre("after 300 ms"));

  laterWork_.front()();

  EXPECT_THAT(calls(), ElementsAre("after 300 ms", "idle sleep prevented", "unregister com.halvo.helper.plist",
                                   "run /bin/launchctl bootout system/com.halvo.helper", "exit", "idle sleep allowed"));
}

TEST_F(OperationWakefulnessTest, WhatChangesNothingLetsItSleep) {
  wiring()->enumerateDomains();
  wiring()->authorizeAdmin(kBlob);
  wiring()->makeHandler()->ping([](const std::string&) {});

  EXPECT_THAT(calls(), Not(Contains("idle sleep prevented")));
}

}  // namespace
}  // namespace halvo
