#include "sim/launchd/Launchd.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "sim/harness/WaitUntil.h"
#include "sim/launchd/testing/RunningLaunchd.h"

namespace halvo::sim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kDaemons = "Library/LaunchDaemons";
constexpr const char* kElsewhere = "elsewhere";
const std::string kNoThrottle = "<key>ThrottleInterval</key><integer>0</integer>";
const std::string kAtLoad = "<key>RunAtLoad</key><true/>";
const std::string kAlways = "<key>KeepAlive</key><true/>";

class LaunchdTest : public testing::Test {
 protected:
  bool runs(const std::string& label) const {
    const auto job = launchd.state("system", label);
    return job && job->pid;
  }

  RunningLaunchd launchd;
};

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

struct RefusalRow {
  std::string name;
  std::function<ControlReply(const RunningLaunchd&)> ask;
  int status;
};

class LaunchdRefusal : public testing::TestWithParam<RefusalRow> {};

TEST_P(LaunchdRefusal, HasLaunchctlsExitStatus) {
  RunningLaunchd launchd;
  launchd.job(kDaemons, "test.idle", {"idle"}, publishing("test.service"));
  launchd.root.write("elsewhere/broken.plist", "garbage");
  launchd.job(kElsewhere, "test.rival", {"idle"}, publishing("test.service"));
  launchd.start();

  EXPECT_EQ(GetParam().ask(launchd).status, GetParam().status);
}

std::string elsewhere(const RunningLaunchd& launchd, const std::string& file) {
  return (launchd.root.path() / "elsewhere" / file).string();
}

INSTANTIATE_TEST_SUITE_P(
    Table, LaunchdRefusal,
    testing::Values(
        RefusalRow{"BootoutOfAnUnknownJob", [](const auto& l) { return l.control().bootout("system/nobody"); }, 3},
        RefusalRow{"BootoutOfADomain", [](const auto& l) { return l.control().bootout("system"); }, 3},
        RefusalRow{"BootoutInAnAbsentDomain", [](const auto& l) { return l.control().bootout("gui/501/x"); }, 112},
        RefusalRow{"BootstrapOfALoadedJob",
                   [](const auto& l) {
                     return l.control().bootstrap("system", (l.root.path() / kDaemons / "test.idle.plist").string());
                   },
                   5},
        RefusalRow{"BootstrapOfGarbage",
                   [](const auto& l) { return l.control().bootstrap("system", elsewhere(l, "broken.plist")); }, 5},
        RefusalRow{"BootstrapOfNothing",
                   [](const auto& l) { return l.control().bootstrap("system", elsewhere(l, "absent.plist")); }, 5},
        RefusalRow{"BootstrapOfATakenService",
                   [](const auto& l) { return l.control().bootstrap("system", elsewhere(l, "test.rival.plist")); }, 5},
        RefusalRow{"BootstrapIntoAnAbsentDomain",
                   [](const auto& l) { return l.control().bootstrap("gui/501", elsewhere(l, "test.rival.plist")); },
                   112},
        RefusalRow{"PrintOfAnAbsentDomain", [](const auto& l) { return l.control().print("gui/501"); }, 112},
        RefusalRow{"PrintOfAnUnknownKindOfDomain", [](const auto& l) { return l.control().print("pid/1"); }, 112},
        RefusalRow{"PrintOfAnUnknownJob", [](const auto& l) { return l.control().print("system/nobody"); }, 113},
        RefusalRow{"KillallOfAJobThatDoesNotRun", [](const auto& l) { return l.control().killall("sim-test-job"); },
                   1}),
    [](const auto& row) { return row.param.name; });

TEST_F(LaunchdTest, ARefusalSaysWhy) {
  const auto plist = launchd.job(kDaemons, "test.idle", {"idle"});
  launchd.start();

  EXPECT_EQ(launchd.control().bootstrap("system", plist).text,
            "Input/output error\nsystem/test.idle is loaded already.");
}

TEST_F(LaunchdTest, PrintDescribesDomainsAndJobs) {
  launchd.job(kDaemons, "test.idle", {"idle"}, publishing("test.service"));
  launchd.start();

  EXPECT_THAT(launchd.control().print("system").text, HasSubstr("test.idle"));
  EXPECT_THAT(launchd.control().print("system/test.idle").text, HasSubstr("state = not running"));
}

TEST_F(LaunchdTest, OthersThanRootMayOnlyLook) {
  if (::geteuid() != 0) GTEST_SKIP() << "Only root can act as somebody else.";
  launchd.job(kDaemons, "test.idle", {"idle"});
  std::filesystem::permissions(launchd.root.path(), std::filesystem::perms(0755));
  launchd.start();

  const pid_t other = ::fork();
  if (other == 0) {
    const bool became = ::setuid(501) == 0;
    const bool looks = launchd.control().print("system").status == 0;
    const bool changes = launchd.control().bootout("system/test.idle").status != 1;
    ::_exit(became && looks && !changes ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(other, &status, 0), other);

  EXPECT_EQ(status, 0);
  EXPECT_TRUE(launchd.state("system", "test.idle"));
}

TEST_F(LaunchdTest, ARegisteredServiceOutlivesARestart) {
  const auto plist = launchd.job(kElsewhere, "test.server", {"serve"}, publishing("test.service"));
  launchd.start();

  EXPECT_EQ(launchd.control().registerService(plist).status, 0);
  EXPECT_EQ(launchd.stop(), 0);
  launchd.start();

  EXPECT_EQ(launchd.root.read("sim/registered-services"), plist + "\n");
  EXPECT_EQ(launchd.ask("test.service")["listen_fds"], "1");
}

TEST_F(LaunchdTest, RegisteringTwiceChangesNothing) {
  const auto plist = launchd.job(kElsewhere, "test.server", {"serve"}, publishing("test.service"));
  launchd.start();

  EXPECT_EQ(launchd.control().registerService(plist).status, 0);
  EXPECT_EQ(launchd.control().registerService(plist).status, 0);

  EXPECT_EQ(launchd.root.read("sim/registered-services"), plist + "\n");
}

TEST_F(LaunchdTest, UnregisteringLeavesTheProcessAndAnswersNobodyElse) {
  const auto plist = launchd.job(kElsewhere, "test.server", {"serve"}, publishing("test.service"));
  launchd.start();
  launchd.control().registerService(plist);
  const pid_t process = launchd.ask("test.service")["pid"];

  EXPECT_EQ(launchd.control().unregisterService("test.server.plist"), std::nullopt);

  EXPECT_TRUE(alive(process));
  EXPECT_EQ(launchd.root.read("sim/registered-services"), "");
  EXPECT_TRUE(launchd.ask("test.service").is_null());
  EXPECT_EQ(launchd.control().bootout("system/test.server").status, 0);
  EXPECT_FALSE(alive(process));
}

TEST_F(LaunchdTest, UnregisteringAJobThatDoesNotRunForgetsIt) {
  const auto plist = launchd.job(kElsewhere, "test.server", {"serve"}, publishing("test.service"));
  launchd.start();
  launchd.control().registerService(plist);

  EXPECT_EQ(launchd.control().unregisterService("test.server.plist"), std::nullopt);

  EXPECT_FALSE(launchd.state("system", "test.server"));
  EXPECT_EQ(launchd.control().registerService(plist).status, 0);
}

TEST_F(LaunchdTest, AJobThatWasUnregisteredIsForgottenWhenItsProcessEnds) {
  const auto plist = launchd.job(kElsewhere, "test.server", {"serve"}, publishing("test.service") + kAlways);
  launchd.start();
  launchd.control().registerService(plist);
  const pid_t process = launchd.ask("test.service")["pid"];
  EXPECT_EQ(launchd.control().unregisterService("test.server.plist"), std::nullopt);

  EXPECT_EQ(launchd.control().registerService(plist).status, 37);
  ::kill(process, SIGKILL);

  EXPECT_TRUE(waitUntil([&] { return !launchd.state("system", "test.server"); }));
}

TEST_F(LaunchdTest, UnregisteringWhatIsNotRegisteredSaysSo) {
  launchd.start();

  EXPECT_EQ(launchd.control().unregisterService("test.server.plist"),
            "The operation couldn’t be completed. (SMAppServiceErrorDomain error 6: job not found)");
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
