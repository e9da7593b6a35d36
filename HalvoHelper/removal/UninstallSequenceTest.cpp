#include "HalvoHelper/removal/UninstallSequence.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/testing/CallRecorder.h"
#include "HalvoHelper/testing/FixedAudioDevices.h"
#include "HalvoHelper/testing/ScriptedPrivilegedFS.h"
#include "HalvoHelper/testing/ScriptedProcessRunner.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A sequence over doubles that all write into one list of calls.
class UninstallSequenceTest : public testing::Test {
 protected:
  UninstallResult run(bool acceptAudioInterruption) {
    const UninstallSequence sequence{
        .fs = fs,
        .launchctl = Launchctl(runner),
        .runner = runner,
        .audio = AudioActivity(devices),
        .activeGuiUids =
            [this] {
              recorder->calls.emplace_back("activeGuiUids");
              return uids;
            },
        .guiAppPath = "/Applications/Halvo.app",
        .logPath = "/var/log/halvo-uninstall.log",
        .log = [this](const std::string& line) { recorder->calls.push_back("log " + line); },
    };
    return sequence.run(acceptAudioInterruption);
  }

  std::shared_ptr<CallRecorder> recorder = std::make_shared<CallRecorder>();
  std::shared_ptr<ScriptedPrivilegedFS> fs = std::make_shared<ScriptedPrivilegedFS>(recorder);
  std::shared_ptr<ScriptedProcessRunner> runner = std::make_shared<ScriptedProcessRunner>(recorder);
  std::shared_ptr<FixedAudioDevices> devices = std::make_shared<FixedAudioDevices>(std::vector<bool>{}, recorder);
  std::vector<std::int64_t> uids = {501};
};

TEST_F(UninstallSequenceTest, EverythingIsRemovedInThisOrder) {
  const UninstallResult result = run(true);

  EXPECT_EQ(result, UninstallResult(UninstallOk{"/Applications/Halvo.app"}));
  EXPECT_THAT(recorder->calls,
              ElementsAre("activeGuiUids", "run /bin/launchctl bootout gui/501/com.halvo.daemon",
                          "remove /Library/LaunchAgents/com.halvo.daemon.plist",
                          "removeTree /Library/Audio/Plug-Ins/HAL/Halvo.driver", "run /usr/bin/killall coreaudiod",
                          "log coreaudiod restart rc=0", "run /bin/launchctl bootout system/com.halvo.broker",
                          "remove /Library/LaunchDaemons/com.halvo.broker.plist",
                          "remove /Library/PrivilegedHelperTools/halvo-broker", "removeTree /private/var/run/halvo",
                          "run /usr/sbin/pkgutil --forget com.halvo.pkg", "remove /private/var/tmp/halvo-daemon.lock",
                          "removeTree /var/db/halvo", "exists /Library/LaunchAgents/com.halvo.daemon.plist",
                          "exists /Library/Audio/Plug-Ins/HAL/Halvo.driver",
                          "exists /Library/LaunchDaemons/com.halvo.broker.plist",
                          "exists /Library/PrivilegedHelperTools/halvo-broker"));
}

TEST_F(UninstallSequenceTest, RunningAudioStopsItBeforeAnythingIsTouched) {
  devices->flags = {false, true};

  EXPECT_EQ(run(false), UninstallResult(UninstallAudioActive{}));

  EXPECT_THAT(recorder->calls, ElementsAre("runningSomewhereFlags"));
}

TEST_F(UninstallSequenceTest, SilenceIsAskedForAndLetsItGoOn) {
  devices->flags = {false, false};

  EXPECT_EQ(run(false), UninstallResult(UninstallOk{"/Applications/Halvo.app"}));

  EXPECT_EQ(recorder->calls.front(), "runningSomewhereFlags");
}

TEST_F(UninstallSequenceTest, AcceptedInterruptionRunsEverythingWithoutAskingForAudio) {
  devices->flags = {true};

  EXPECT_EQ(run(true), UninstallResult(UninstallOk{"/Applications/Halvo.app"}));

  EXPECT_THAT(recorder->calls, testing::Not(testing::Contains("runningSomewhereFlags")));
  EXPECT_THAT(recorder->calls, testing::Contains("run /usr/bin/killall coreaudiod"));
}

TEST_F(UninstallSequenceTest, EveryGuiUserLosesTheAgentInTheOrderGiven) {
  uids = {502, 501};

  run(true);

  EXPECT_EQ(recorder->calls[1], "run /bin/launchctl bootout gui/502/com.halvo.daemon");
  EXPECT_EQ(recorder->calls[2], "run /bin/launchctl bootout gui/501/com.halvo.daemon");
}

TEST_F(UninstallSequenceTest, WithoutGuiUsersNoAgentIsBootedOut) {
  uids = {};

  EXPECT_EQ(run(true), UninstallResult(UninstallOk{"/Applications/Halvo.app"}));

  EXPECT_EQ(recorder->calls[1], "remove /Library/LaunchAgents/com.halvo.daemon.plist");
}

TEST_F(UninstallSequenceTest, ToolsThatFailChangeOnlyTheRestartLine) {
  runner->replies = {{3, ""}, {1, "No matching processes"}, {3, ""}, {1, "No receipt"}};

  EXPECT_EQ(run(true), UninstallResult(UninstallOk{"/Applications/Halvo.app"}));

  EXPECT_THAT(recorder->calls, testing::Contains("log coreaudiod restart rc=1"));
}

TEST_F(UninstallSequenceTest, AnUnremovableDriverIsNamedAfterEveryOtherStepRan) {
  fs->present = {"/Library/Audio/Plug-Ins/HAL/Halvo.driver"};
  fs->failing = {"removeTree /Library/Audio/Plug-Ins/HAL/Halvo.driver"};

  EXPECT_EQ(run(true), UninstallResult(UninstallIncomplete{"/var/log/halvo-uninstall.log"}));

  EXPECT_THAT(recorder->calls, testing::Contains("removeTree /var/db/halvo"));
  EXPECT_EQ(recorder->calls.back(), "log uninstall incomplete; leftover: /Library/Audio/Plug-Ins/HAL/Halvo.driver");
}

TEST_F(UninstallSequenceTest, AllLeftoversAreNamedInTheirOrder) {
  fs->present = {"/Library/PrivilegedHelperTools/halvo-broker", "/Library/LaunchDaemons/com.halvo.broker.plist",
                 "/Library/Audio/Plug-Ins/HAL/Halvo.driver", "/Library/LaunchAgents/com.halvo.daemon.plist"};

  EXPECT_EQ(run(true), UninstallResult(UninstallIncomplete{"/var/log/halvo-uninstall.log"}));

  EXPECT_EQ(recorder->calls.back(),
            "log uninstall incomplete; leftover: /Library/LaunchAgents/com.halvo.daemon.plist, "
            "/Library/Audio/Plug-Ins/HAL/Halvo.driver, /Library/LaunchDaemons/com.halvo.broker.plist, "
            "/Library/PrivilegedHelperTools/halvo-broker");
}

// What is not among the four checked paths never makes the result incomplete.
class UncheckedPath : public UninstallSequenceTest,
                      public testing::WithParamInterface<std::pair<const char*, const char*>> {};

TEST_P(UncheckedPath, ThatStaysLeavesTheResultOk) {
  fs->present = {GetParam().first};
  fs->failing = {GetParam().second};

  EXPECT_EQ(run(true), UninstallResult(UninstallOk{"/Applications/Halvo.app"}));
}

INSTANTIATE_TEST_SUITE_P(Table, UncheckedPath,
                         testing::Values(std::pair("/var/db/halvo", "removeTree /var/db/halvo"),
                                         std::pair("/private/var/run/halvo", "removeTree /private/var/run/halvo"),
                                         std::pair("/private/var/tmp/halvo-daemon.lock",
                                                   "remove /private/var/tmp/halvo-daemon.lock")));

TEST_F(UninstallSequenceTest, ASecondRunDoesTheSameAgain) {
  run(true);
  const std::vector<std::string> first = recorder->calls;
  recorder->calls.clear();

  EXPECT_EQ(run(true), UninstallResult(UninstallOk{"/Applications/Halvo.app"}));

  EXPECT_EQ(recorder->calls, first);
}

}  // namespace
}  // namespace halvo
