#include "sim/launchd/LaunchctlCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "sim/launchd/testing/RunningLaunchd.h"

namespace halvo::sim {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class LaunchctlUsage : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(LaunchctlUsage, IsExplained) {
  std::ostringstream out;
  std::ostringstream err;

  EXPECT_EQ(launchctlCommand(ControlClient("/nowhere/launchd.sock"), GetParam(), out, err), 64);

  EXPECT_THAT(err.str(), StartsWith("Usage: launchctl bootstrap DOMAIN PLIST..."));
}

using Words = std::vector<std::string>;
INSTANTIATE_TEST_SUITE_P(Table, LaunchctlUsage,
                         testing::Values(Words{}, Words{"start", "x"}, Words{"bootstrap", "system"}, Words{"bootout"},
                                         Words{"print"}, Words{"print", "system", "x"}));

TEST(LaunchctlCommandTest, ALaunchdThatIsNotThereIsSaidSo) {
  std::ostringstream out;
  std::ostringstream err;

  EXPECT_EQ(launchctlCommand(ControlClient("/nowhere/launchd.sock"), {"print", "system"}, out, err), 71);

  EXPECT_THAT(err.str(), HasSubstr("launchd cannot be reached"));
}

TEST(LaunchctlCommandTest, FailuresAreReportedInLaunchctlsWords) {
  RunningLaunchd launchd;
  launchd.start();
  std::ostringstream out;
  std::ostringstream err;

  EXPECT_EQ(launchctlCommand(launchd.control(), {"bootout", "system/nobody"}, out, err), 3);

  EXPECT_EQ(err.str(), "Boot-out failed: 3: No such process\n");
}

TEST(LaunchctlCommandTest, PrintShowsTheDomainOnStandardOutput) {
  RunningLaunchd launchd;
  launchd.job("Library/LaunchDaemons", "test.idle", {"idle"});
  launchd.start();
  std::ostringstream out;
  std::ostringstream err;

  EXPECT_EQ(launchctlCommand(launchd.control(), {"print", "system"}, out, err), 0);

  EXPECT_THAT(out.str(), HasSubstr("0\t-\ttest.idle\n"));
}

TEST(KillallCommandTest, NeedsAName) {
  std::ostringstream err;

  EXPECT_EQ(killallCommand(ControlClient("/nowhere/launchd.sock"), {}, err), 1);

  EXPECT_EQ(err.str(), "usage: killall procname ...\n");
}

TEST(KillallCommandTest, ANameThatNobodyHasIsAFailure) {
  RunningLaunchd launchd;
  launchd.start();
  std::ostringstream err;

  EXPECT_EQ(killallCommand(launchd.control(), {"coreaudiod"}, err), 1);

  EXPECT_EQ(err.str(), "No matching processes belonging to you were found\n");
}

}  // namespace
}  // namespace halvo::sim
