// The removal operations of the wiring.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "main/WiringBench.h"

namespace halvo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::MatchesRegex;

class WiredRemovalTest : public WiringBench {
 protected:
  std::string uninstallLog() const { return contentsOf(directory_.path("uninstall.log")); }
};

TEST_F(WiredRemovalTest, UninstallLeavesTheApplicationToARequestOfItsOwn) {
  EXPECT_EQ(wiring()->runUninstall(false), UninstallResult(UninstallOk{"/Applications/Halvo.app"}));
}

TEST_F(WiredRemovalTest, UninstallReachesEveryAdapter) {
  runner_->replies = {{0, "ann 501\n"}, {0, ""}};

  wiring()->runUninstall(false);

  EXPECT_THAT(calls(), Contains("runningSomewhereFlags"));
  EXPECT_THAT(calls(), Contains("run /bin/launchctl bootout gui/501/com.halvo.daemon"));
  EXPECT_THAT(calls(), Contains("run /usr/sbin/pkgutil --forget com.halvo.pkg"));
  EXPECT_THAT(calls(), Contains("removeTree /Library/Audio/Plug-Ins/HAL/Halvo.driver"));
}

TEST_F(WiredRemovalTest, UninstallAsksForAudioFirst) {
  audio_->flags = {true};

  EXPECT_EQ(wiring()->runUninstall(false), UninstallResult(UninstallAudioActive{}));

  EXPECT_THAT(calls(), ElementsAre("runningSomewhereFlags"));
}

TEST_F(WiredRemovalTest, UninstallDoesNotAskForAudioWhenAnInterruptionWasAccepted) {
  audio_->flags = {true};

  EXPECT_EQ(wiring()->runUninstall(true), UninstallResult(UninstallOk{"/Applications/Halvo.app"}));
}

TEST_F(WiredRemovalTest, UninstallTellsWhereItsLogIs) {
  fs_->present = {"/Library/PrivilegedHelperTools/halvo-broker"};

  EXPECT_EQ(wiring()->runUninstall(false), UninstallResult(UninstallIncomplete{directory_.path("uninstall.log")}));
}

TEST_F(WiredRemovalTest, UninstallWritesToItsOwnLogAndTheSystemLog) {
  wiring()->runUninstall(false);

  EXPECT_THAT(uninstallLog(), MatchesRegex("[-0-9]+ [:0-9]+ \\+0000: coreaudiod restart rc=0\n"));
  EXPECT_THAT(systemLog_.lines(), ElementsAre("halvo-helper: coreaudiod restart rc=0"));
  EXPECT_FALSE(isNamed(directory_.path("install.log")));
}

TEST_F(WiredRemovalTest, BundleRemovalRefusesAPathThatIsNoBundleOfOurs) {
  EXPECT_FALSE(wiring()->removeAppBundle("/Applications/Other.app"));

  EXPECT_THAT(systemLog_.lines(),
              ElementsAre("halvo-helper: refused to remove non-Halvo path /Applications/Other.app"));
}

TEST_F(WiredRemovalTest, BundleRemovalRemovesWhereLinksLeadTo) {
  const std::string bundle = directory_.makeDirectory("real/Halvo.app");
  const std::string link = directory_.makeLink("Halvo.app", bundle);
  fs_->present = {link + "/Contents/MacOS/halvo-app"};

  EXPECT_TRUE(wiring()->removeAppBundle(link));

  EXPECT_THAT(calls(), Contains("removeTree " + bundle));
}

}  // namespace
}  // namespace halvo
