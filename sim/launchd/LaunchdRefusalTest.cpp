// What launchctl is told when a request cannot be met, and what it may look at.
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "sim/launchd/testing/RunningLaunchd.h"

namespace halvo::sim {
namespace {

using testing::HasSubstr;

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
        RefusalRow{"PrintOfADomainWithoutUid", [](const auto& l) { return l.control().print("gui/user501"); }, 112},
        RefusalRow{"PrintOfAnUnknownJob", [](const auto& l) { return l.control().print("system/nobody"); }, 113},
        RefusalRow{"KillallOfAJobThatDoesNotRun", [](const auto& l) { return l.control().killall("sim-test-job"); },
                   1}),
    [](const auto& row) { return row.param.name; });

struct OwnershipRow {
  std::string name;
  std::function<void(const std::filesystem::path& plist)> spoil;
};

class UnsafeDaemon : public LaunchdTest, public testing::WithParamInterface<OwnershipRow> {};

TEST_P(UnsafeDaemon, IsRefused) {
  const auto plist = launchd.job(kElsewhere, "test.idle", {"idle"});
  launchd.start();
  GetParam().spoil(plist);

  const ControlReply reply = launchd.control().bootstrap("system", plist);

  EXPECT_EQ(reply.status, 5);
  EXPECT_THAT(reply.text, HasSubstr("test.idle.plist: Path had bad ownership/permissions"));
}

INSTANTIATE_TEST_SUITE_P(
    Table, UnsafeDaemon,
    testing::Values(
        OwnershipRow{"GroupMayWrite",
                     [](const auto& plist) { std::filesystem::permissions(plist, std::filesystem::perms(0664)); }},
        OwnershipRow{"OthersMayWrite",
                     [](const auto& plist) { std::filesystem::permissions(plist, std::filesystem::perms(0646)); }}),
    [](const auto& row) { return row.param.name; });

TEST_F(LaunchdTest, ADaemonWhoseListBelongsToSomebodyElseIsRefused) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give a file away";
  const auto plist = launchd.job(kElsewhere, "test.idle", {"idle"});
  launchd.start();
  ASSERT_EQ(::chown(plist.c_str(), 501, 20), 0);

  EXPECT_EQ(launchd.control().bootstrap("system", plist).status, 5);
}

TEST_F(LaunchdTest, ADaemonWhoseProgramOthersMayWriteIsRefused) {
  const auto program = launchd.root.write("program", "#!/bin/sh\n");
  std::filesystem::permissions(program, std::filesystem::perms(0777));
  const auto plist =
      launchd.job(kElsewhere, "test.idle", {"idle"}, "<key>Program</key><string>" + program.string() + "</string>");
  launchd.start();

  EXPECT_EQ(launchd.control().bootstrap("system", plist).status, 5);
}

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

}  // namespace
}  // namespace halvo::sim
