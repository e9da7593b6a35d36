// launchctl and killall, in the words of the real ones.
#include <sstream>

#include "sim/launchd/testing/RunningLaunchd.h"
#include "sim/tools/SystemTools.h"

namespace halvo::sim {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Words = std::vector<std::string>;

class LaunchdToolsTest : public testing::Test {
 protected:
  int launchctl(const Words& words) { return launchctlTool(launchd.control(), words, {.out = out, .err = err}); }
  int killall(const Words& words) { return killallTool(launchd.control(), words, {.out = out, .err = err}); }

  RunningLaunchd launchd;
  std::ostringstream out;
  std::ostringstream err;
};

class LaunchctlUsage : public LaunchdToolsTest, public testing::WithParamInterface<Words> {};

TEST_P(LaunchctlUsage, IsExplained) {
  EXPECT_EQ(launchctl(GetParam()), 64);

  EXPECT_THAT(err.str(), StartsWith("Usage: launchctl bootstrap DOMAIN PLIST"));
}

INSTANTIATE_TEST_SUITE_P(Table, LaunchctlUsage,
                         testing::Values(Words{}, Words{"start", "x"}, Words{"bootstrap", "system"}, Words{"bootout"},
                                         Words{"print"}, Words{"print", "system", "x"}));

TEST_F(LaunchdToolsTest, ALaunchdThatIsNotThereIsSaidSo) {
  EXPECT_EQ(launchctl({"print", "system"}), 71);

  EXPECT_THAT(err.str(), HasSubstr("launchd cannot be reached"));
}

TEST_F(LaunchdToolsTest, FailuresAreReportedInLaunchctlsWords) {
  launchd.start();

  EXPECT_EQ(launchctl({"bootout", "system/nobody"}), 3);

  EXPECT_EQ(err.str(), "Boot-out failed: 3: No such process\n");
}

TEST_F(LaunchdToolsTest, PrintShowsTheDomainOnStandardOutput) {
  launchd.job("Library/LaunchDaemons", "test.idle", {"idle"});
  launchd.start();

  EXPECT_EQ(launchctl({"print", "system"}), 0);

  EXPECT_THAT(out.str(), HasSubstr("0\t-\ttest.idle\n"));
}

TEST_F(LaunchdToolsTest, KillallNeedsAName) {
  EXPECT_EQ(killall({}), 1);

  EXPECT_EQ(err.str(), "usage: killall procname\n");
}

TEST_F(LaunchdToolsTest, KillallOfANameThatNobodyHasIsAFailure) {
  launchd.start();

  EXPECT_EQ(killall({"coreaudiod"}), 1);

  EXPECT_EQ(err.str(), "No matching processes belonging to you were found\n");
}

}  // namespace
}  // namespace halvo::sim
