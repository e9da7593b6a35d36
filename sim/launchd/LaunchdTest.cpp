#include "sim/launchd/Launchd.h"

#include <signal.h>

#include <future>

#include "sim/launchd/testing/RunningLaunchd.h"
#include "sim/support/WaitUntil.h"

namespace halvo::sim {
namespace {

using testing::HasSubstr;

TEST_F(LaunchdTest, AJobWithAServiceWaitsForItsFirstClient) {
  launchd.job(kDaemons, "test.server", {"serve"}, publishing("test.service"));
  launchd.start();

  EXPECT_FALSE(runs("test.server"));
  EXPECT_EQ(launchd.ask("test.service")["listen_fds"], "1");
  EXPECT_TRUE(waitUntil([&] { return runs("test.server"); }));
}

TEST_F(LaunchdTest, AJobStartsWithNothingButItsSocket) {
  launchd.job(kDaemons, "test.server", {"serve"}, publishing("test.service"));
  launchd.start();

  const nlohmann::json job = launchd.ask("test.service");

  EXPECT_EQ(job["descriptors"], nlohmann::json({0, 1, 2, 3}));
  EXPECT_EQ(job["listen_pid"], std::to_string(job["pid"].get<pid_t>()));
  EXPECT_EQ(job["listen_names"], "test.service");
  EXPECT_EQ(job["path"], "/usr/bin:/bin:/usr/sbin:/sbin");
  EXPECT_EQ(job["home"], "");
  EXPECT_EQ(job["folder"], "/");
  EXPECT_EQ(job["umask"], 022);
  EXPECT_EQ(job["leads_group"], true);
  EXPECT_EQ(job["blocks_signals"], false);
}

TEST_F(LaunchdTest, TheNextClientAfterAnExitStartsTheNextProcess) {
  launchd.job(kDaemons, "test.server", {"serve"}, publishing("test.service") + kNoThrottle);
  launchd.start();

  const nlohmann::json first = launchd.ask("test.service", "q");
  const nlohmann::json second = launchd.ask("test.service");

  EXPECT_NE(first["pid"], second["pid"]);
  EXPECT_TRUE(waitUntil([&] { return launchd.state("system", "test.server")->starts == 2; }));
  EXPECT_EQ(launchd.state("system", "test.server")->lastExitStatus, 7);
}

TEST_F(LaunchdTest, ADemandStartWithinTheThrottleIntervalWaitsForItsEnd) {
  launchd.root.write("sim/clock-rate", "100\n");
  launchd.job(kDaemons, "test.server", {"serve"}, publishing("test.service"));
  launchd.start();

  const auto before = std::chrono::steady_clock::now();
  launchd.ask("test.service", "q");
  launchd.ask("test.service");

  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(95));
}

TEST_F(LaunchdTest, EverybodyMayConnectToAService) {
  launchd.job(kDaemons, "test.server", {"serve"}, publishing("test.service"));
  launchd.start();

  EXPECT_EQ(std::filesystem::status(launchd.service("test.service")).permissions(), std::filesystem::perms(0666));
}

TEST_F(LaunchdTest, AJobThatRunsAtLoadRunsWhenBootstrapIsAnswered) {
  launchd.start();

  EXPECT_EQ(launchd.control().bootstrap("system", launchd.job(kElsewhere, "test.idle", {"idle"}, kAtLoad)).status, 0);

  EXPECT_TRUE(runs("test.idle"));
}

TEST_F(LaunchdTest, AJobThatIsKeptAliveComesBack) {
  launchd.job(kDaemons, "test.idle", {"idle"}, kAlways + kNoThrottle);
  launchd.start();

  EXPECT_EQ(launchd.control().killall(std::filesystem::path(HALVO_SIM_TEST_JOB).filename()).status, 0);

  EXPECT_TRUE(waitUntil([&] { return launchd.state("system", "test.idle")->starts == 2; }));
  EXPECT_EQ(launchd.state("system", "test.idle")->lastExitStatus, 128 + SIGTERM);
  EXPECT_TRUE(runs("test.idle"));
}

TEST_F(LaunchdTest, AProgramThatIsMissingIsAConfigurationError) {
  const auto plist = launchd.root.write(
      "elsewhere/x.plist",
      "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>Label</key><string>x</string><key>Program</key>"
      "<string>/nowhere/x</string><key>RunAtLoad</key><true/></dict></plist>");
  launchd.start();

  EXPECT_EQ(launchd.control().bootstrap("system", plist).status, 0);

  EXPECT_EQ(launchd.state("system", "x")->lastExitStatus, 78);
  EXPECT_EQ(launchd.state("system", "x")->starts, 0);
}

TEST_F(LaunchdTest, AClientWaitsWhileTheProgramIsMissingAndIsServedWhenItIsBack) {
  const auto program = launchd.root.path() / "program";
  launchd.job(kDaemons, "test.server", {"serve"},
              publishing("test.service") + kNoThrottle + "<key>Program</key><string>" + program.string() + "</string>");
  launchd.start();

  auto answer = std::async(std::launch::async, [&] { return launchd.ask("test.service"); });
  ASSERT_TRUE(waitUntil([&] { return launchd.state("system", "test.server")->lastExitStatus == 78; }));
  std::filesystem::create_symlink(HALVO_SIM_TEST_JOB, program);

  EXPECT_EQ(answer.get()["listen_fds"], "1");
}

TEST_F(LaunchdTest, PrintTellsHowTheLastProcessEnded) {
  launchd.job(kDaemons, "test.idle", {"idle"}, kAtLoad);
  launchd.job(kDaemons, "test.server", {"serve"}, publishing("test.service"));
  launchd.start();

  EXPECT_THAT(launchd.control().print("system/test.server").text, HasSubstr("\tlast exit code = (never exited)\n"));
  launchd.ask("test.service", "q");
  ::kill(launchd.state("system", "test.idle")->pid.value(), SIGKILL);
  ASSERT_TRUE(waitUntil([&] { return launchd.state("system", "test.server")->lastExitStatus == 7; }));
  ASSERT_TRUE(waitUntil([&] { return launchd.state("system", "test.idle")->lastExitStatus == 128 + SIGKILL; }));

  EXPECT_THAT(launchd.control().print("system/test.server").text, HasSubstr("\tlast exit code = 7\n"));
  EXPECT_THAT(launchd.control().print("system/test.idle").text, HasSubstr("\tlast terminating signal = Killed: 9\n"));
}

TEST_F(LaunchdTest, WhoeverIsLoggedInGetsTheAgents) {
  launchd.root.write("sim/gui-sessions", "501\n502\n");
  launchd.job("Library/LaunchAgents", "test.agent", {"idle"});
  launchd.start();

  EXPECT_TRUE(launchd.state("gui/501", "test.agent"));
  EXPECT_TRUE(launchd.state("gui/502", "test.agent"));
  EXPECT_FALSE(launchd.state("system", "test.agent"));
}

TEST_F(LaunchdTest, AnAgentRunsAsItsUser) {
  if (::geteuid() != 0) GTEST_SKIP() << "Only root can run jobs as somebody else.";
  launchd.root.write("sim/gui-sessions", "501\n");
  launchd.job("Library/LaunchAgents", "test.agent", {"serve"}, publishing("test.service"));
  launchd.start();

  EXPECT_EQ(launchd.ask("test.service")["user"], 501);
}

TEST_F(LaunchdTest, BootoutEndsTheProcessAndItsServicesBeforeItAnswers) {
  launchd.job(kDaemons, "test.server", {"serve"}, publishing("test.service"));
  launchd.start();
  const pid_t process = launchd.ask("test.service")["pid"];

  EXPECT_EQ(launchd.control().bootout("system/test.server"), ControlReply());

  EXPECT_FALSE(alive(process));
  EXPECT_FALSE(launchd.state("system", "test.server"));
  EXPECT_TRUE(launchd.ask("test.service").is_null());
  EXPECT_FALSE(std::filesystem::exists(launchd.service("test.service")));
}

TEST_F(LaunchdTest, AJobThatWasBootedOutCanBeBootstrappedAtOnce) {
  const auto plist = launchd.job(kDaemons, "test.server", {"serve"}, publishing("test.service") + kAtLoad);
  launchd.start();

  EXPECT_EQ(launchd.control().bootout("system/test.server").status, 0);
  EXPECT_EQ(launchd.control().bootstrap("system", plist).status, 0);

  EXPECT_EQ(launchd.ask("test.service")["listen_fds"], "1");
}

TEST_F(LaunchdTest, AProcessThatIgnoresItsTerminationIsKilled) {
  const std::string ready = (launchd.root.path() / "ready").string();
  launchd.job(kDaemons, "test.deaf", {"stubborn", ready}, kAtLoad + "<key>ExitTimeOut</key><integer>1</integer>");
  launchd.start();
  ASSERT_TRUE(waitUntil([&] { return std::filesystem::exists(ready); }));

  EXPECT_EQ(launchd.control().bootout("system/test.deaf").status, 0);

  EXPECT_FALSE(launchd.state("system", "test.deaf"));
}

TEST_F(LaunchdTest, AJobCanBootItselfOutThroughAChildInAnotherProcessGroup) {
  const std::string result = (launchd.root.path() / "result").string();
  launchd.job(kDaemons, "test.suicidal",
              {"bootout-myself", (launchd.root.path() / "sim/launchd.sock").string(), "system/test.suicidal", result},
              kAtLoad);
  launchd.start();

  EXPECT_TRUE(waitUntil([&] { return std::filesystem::exists(result); }));

  EXPECT_EQ(launchd.root.read("result"), "0");
  EXPECT_FALSE(launchd.state("system", "test.suicidal"));
}

TEST_F(LaunchdTest, WhatAJobLeavesInItsProcessGroupEndsWithIt) {
  const std::string file = (launchd.root.path() / "child").string();
  launchd.job(kDaemons, "test.parent", {"leave-child", file}, kAtLoad);
  launchd.start();

  ASSERT_TRUE(waitUntil([&] { return std::filesystem::exists(file); }));

  EXPECT_TRUE(waitUntil([&] { return !alive(std::stoi(launchd.root.read("child"))); }));
}

TEST_F(LaunchdTest, WhatAJobPrintsIsKept) {
  const auto plist =
      launchd.root.write("elsewhere/x.plist",
                         "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>Label</key><string>x</string>"
                         "<key>ProgramArguments</key><array><string>/bin/echo</string><string>hello</string></array>"
                         "<key>RunAtLoad</key><true/></dict></plist>");
  launchd.start();

  EXPECT_EQ(launchd.control().bootstrap("system", plist).status, 0);

  EXPECT_TRUE(waitUntil([&] { return launchd.root.read("sim/job-output/x.log") == "hello\n"; }));
}

}  // namespace
}  // namespace halvo::sim
