#include "HalvoHelper/removal/FinalRemoval.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "HalvoHelper/testing/CallRecorder.h"
#include "HalvoHelper/testing/ScriptedProcessRunner.h"

namespace halvo {
namespace {

using testing::ElementsAre;

class FinalRemovalTest : public testing::Test {
 protected:
  void finalize(const std::optional<std::string>& unregisterFailure = std::nullopt) {
    halvoFinalizeRemoval(
        [&] {
          recorder->calls.emplace_back("unregister");
          return unregisterFailure;
        },
        Launchctl(runner), [&](const std::string& line) { recorder->calls.push_back("log " + line); },
        [&] { recorder->calls.emplace_back("exit"); });
  }

  std::shared_ptr<CallRecorder> recorder = std::make_shared<CallRecorder>();
  std::shared_ptr<ScriptedProcessRunner> runner = std::make_shared<ScriptedProcessRunner>(recorder);
};

TEST_F(FinalRemovalTest, UnregistersThenBootsItselfOutThenExits) {
  finalize();

  EXPECT_THAT(recorder->calls, ElementsAre("unregister", "log halvo-helper: finalized, booting out com.halvo.helper",
                                           "run /bin/launchctl bootout system/com.halvo.helper",
                                           "log halvo-helper: bootout returned 0, exiting", "exit"));
}

TEST_F(FinalRemovalTest, AFailureToUnregisterIsLoggedFirstAndStopsNothing) {
  finalize("Operation not permitted");

  EXPECT_THAT(recorder->calls,
              ElementsAre("unregister", "log halvo-helper: SMAppService unregister failed: Operation not permitted",
                          "log halvo-helper: finalized, booting out com.halvo.helper",
                          "run /bin/launchctl bootout system/com.halvo.helper",
                          "log halvo-helper: bootout returned 0, exiting", "exit"));
}

TEST_F(FinalRemovalTest, ABootoutThatFailsIsLoggedWithItsStatusAndTheProcessStillExits) {
  runner->replies = {{113, "Could not find service"}};

  finalize();

  EXPECT_THAT(recorder->calls, testing::Contains("log halvo-helper: bootout returned 113, exiting"));
  EXPECT_EQ(recorder->calls.back(), "exit");
}

TEST_F(FinalRemovalTest, ExitIsCalledExactlyOnceAndLast) {
  finalize("anything");

  EXPECT_EQ(std::ranges::count(recorder->calls, "exit"), 1);
  EXPECT_EQ(recorder->calls.back(), "exit");
}

}  // namespace
}  // namespace halvo
