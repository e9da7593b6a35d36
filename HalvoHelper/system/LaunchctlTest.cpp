#include "HalvoHelper/system/Launchctl.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "HalvoHelper/testing/ScriptedProcessRunner.h"

namespace halvo {
namespace {

using testing::ElementsAre;

class LaunchctlTest : public testing::Test {
 protected:
  std::shared_ptr<ScriptedProcessRunner> runner_ = std::make_shared<ScriptedProcessRunner>();
  Launchctl launchctl_{runner_};
};

TEST_F(LaunchctlTest, BootoutFromAUserNamesDomainAndLabelInOneArgument) {
  runner_->replies = {{.code = 3, .output = "Boot-out failed: 3: No such process"}};

  EXPECT_EQ(launchctl_.bootoutGui(501, "com.halvo.daemon"), 3);

  EXPECT_THAT(runner_->runs, ElementsAre(ElementsAre("/bin/launchctl", "bootout", "gui/501/com.halvo.daemon")));
}

TEST_F(LaunchctlTest, BootoutFromTheSystemNamesDomainAndLabelInOneArgument) {
  runner_->replies = {{.code = 36, .output = ""}};

  EXPECT_EQ(launchctl_.bootoutSystem("com.halvo.broker"), 36);

  EXPECT_THAT(runner_->runs, ElementsAre(ElementsAre("/bin/launchctl", "bootout", "system/com.halvo.broker")));
}

TEST_F(LaunchctlTest, BootstrapIntoTheSystemPassesThePropertyListSeparately) {
  runner_->replies = {{.code = 5, .output = "Bootstrap failed: 5: Input/output error"}};

  EXPECT_EQ(launchctl_.bootstrapSystem("/Library/LaunchDaemons/com.halvo.broker.plist"), 5);

  EXPECT_THAT(runner_->runs, ElementsAre(ElementsAre("/bin/launchctl", "bootstrap", "system",
                                                     "/Library/LaunchDaemons/com.halvo.broker.plist")));
}

TEST_F(LaunchctlTest, BootstrapIntoAUserPassesThePropertyListSeparately) {
  runner_->replies = {{.code = 125, .output = ""}};

  EXPECT_EQ(launchctl_.bootstrapGui(502, "/Library/LaunchAgents/com.halvo.daemon.plist"), 125);

  EXPECT_THAT(runner_->runs, ElementsAre(ElementsAre("/bin/launchctl", "bootstrap", "gui/502",
                                                     "/Library/LaunchAgents/com.halvo.daemon.plist")));
}

TEST_F(LaunchctlTest, AGuiDomainIsPresentWhenItCanBePrinted) {
  runner_->replies = {{.code = 0, .output = "gui/0 = {"}};

  EXPECT_TRUE(launchctl_.guiDomainPresent(0));

  EXPECT_THAT(runner_->runs, ElementsAre(ElementsAre("/bin/launchctl", "print", "gui/0")));
}

TEST_F(LaunchctlTest, AGuiDomainIsAbsentAtAnyOtherStatus) {
  runner_->replies = {
      {.code = 113, .output = ""}, {.code = 1, .output = ""}, {.code = -1, .output = "spawn failed: x"}};

  EXPECT_FALSE(launchctl_.guiDomainPresent(501));
  EXPECT_FALSE(launchctl_.guiDomainPresent(501));
  EXPECT_FALSE(launchctl_.guiDomainPresent(501));
}

TEST_F(LaunchctlTest, TheAudioDaemonIsKilledByNameAlone) {
  runner_->replies = {{.code = 1, .output = "No matching processes were found"}};

  EXPECT_EQ(launchctl_.restartCoreaudiod(), 1);

  EXPECT_THAT(runner_->runs, ElementsAre(ElementsAre("/usr/bin/killall", "coreaudiod")));
}

TEST_F(LaunchctlTest, AToolThatCannotBeStartedAnswersMinusOne) {
  runner_->replies = {{.code = -1, .output = "spawn failed: x"}, {.code = -1, .output = "spawn failed: x"}};

  EXPECT_EQ(launchctl_.bootoutSystem("com.halvo.helper"), -1);
  EXPECT_EQ(launchctl_.restartCoreaudiod(), -1);
}

TEST_F(LaunchctlTest, BlanksAndQuotesStayInsideOneArgument) {
  launchctl_.bootoutGui(501, "a label; rm -rf '/'");
  launchctl_.bootstrapSystem("/a path/with \"quotes\"\n.plist");

  EXPECT_THAT(runner_->runs,
              ElementsAre(ElementsAre("/bin/launchctl", "bootout", "gui/501/a label; rm -rf '/'"),
                          ElementsAre("/bin/launchctl", "bootstrap", "system", "/a path/with \"quotes\"\n.plist")));
}

TEST_F(LaunchctlTest, UserIdsAreWrittenInFull) {
  launchctl_.guiDomainPresent(std::numeric_limits<std::int64_t>::max());
  launchctl_.guiDomainPresent(-2);

  EXPECT_THAT(runner_->runs, ElementsAre(ElementsAre("/bin/launchctl", "print", "gui/9223372036854775807"),
                                         ElementsAre("/bin/launchctl", "print", "gui/-2")));
}

}  // namespace
}  // namespace halvo
