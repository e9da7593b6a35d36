#include "sim/launchd/Session.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include "sim/launchd/testing/RunningLaunchd.h"
#include "sim/support/WaitUntil.h"

namespace halvo::sim {
namespace {

TEST(SessionTest, PassesTheCommandsExitStatusOn) {
  const RunningLaunchd launchd;

  EXPECT_EQ(launchd.runSession({"/bin/sh", "-c", "exit 42"}), 42);
}

TEST(SessionTest, TellsBySignalNumberWhatEndedTheCommand) {
  const RunningLaunchd launchd;

  EXPECT_EQ(launchd.runSession({"/bin/sh", "-c", "kill -9 $$"}), 128 + SIGKILL);
}

TEST(SessionTest, ACommandThatDoesNotExistIs127) {
  const RunningLaunchd launchd;

  EXPECT_EQ(launchd.runSession({"/nowhere/command"}), 127);
}

TEST(SessionTest, EndsEveryJob) {
  RunningLaunchd launchd;
  launchd.job("Library/LaunchDaemons", "test.idle", {"idle"}, "<key>KeepAlive</key><true/>");
  launchd.start();
  const pid_t process = launchd.state("system", "test.idle")->pid.value_or(0);
  ASSERT_TRUE(alive(process));

  EXPECT_EQ(launchd.stop(), 0);

  EXPECT_FALSE(alive(process));
}

TEST(SessionTest, EndsWhatTheCommandLeavesRunning) {
  const RunningLaunchd launchd;
  const std::string file = (launchd.root.path() / "pid").string();

  EXPECT_EQ(launchd.runSession({"/bin/sh", "-c", "setsid sleep 1000 & echo $! > " + file}), 0);

  EXPECT_FALSE(alive(std::stoi(launchd.root.read("pid"))));
}

TEST(SessionTest, EndsEverythingWhenItIsTerminated) {
  RunningLaunchd launchd;
  launchd.job("Library/LaunchDaemons", "test.idle", {"idle"}, "<key>KeepAlive</key><true/>");
  launchd.start();
  const pid_t process = launchd.state("system", "test.idle")->pid.value_or(0);

  EXPECT_EQ(launchd.end(SIGTERM), 128 + SIGTERM);

  EXPECT_FALSE(alive(process));
}

TEST(SessionTest, NoJobOutlivesALaunchdThatIsKilled) {
  RunningLaunchd launchd;
  launchd.job("Library/LaunchDaemons", "test.idle", {"idle"}, "<key>KeepAlive</key><true/>");
  launchd.start();
  const pid_t process = launchd.state("system", "test.idle")->pid.value_or(0);

  EXPECT_EQ(launchd.end(SIGKILL), 128 + SIGKILL);

  EXPECT_TRUE(waitUntil([&] { return !alive(process); }));
}

TEST(SessionTest, AMachineRunsOnceAtATime) {
  RunningLaunchd launchd;
  launchd.start();

  EXPECT_EQ(launchd.runSession({"/bin/true"}), 75);
}

TEST(SessionTest, ServicesOfAnEarlierLifeAreGone) {
  RunningLaunchd launchd;
  launchd.root.write("var/run/mach/stale", "");
  launchd.start();

  EXPECT_FALSE(std::filesystem::exists(launchd.service("stale")));
}

}  // namespace
}  // namespace halvo::sim
