#include "sim/machine/MachineRoot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/machine/MachineEntry.h"
#include "sim/support/ChildProcess.h"
#include "sim/support/WaitUntil.h"

namespace halvo::sim {
namespace {

using testing::HasSubstr;
using testing::Optional;
using testing::StartsWith;

// The program itself, in a process of its own.
pid_t startProgram(std::vector<std::string> words) {
  const pid_t child = ::fork();
  if (child != 0) return child;
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  ::execv(argv[0], argv.data());
  ::_exit(127);
}

class MachineRootTest : public testing::Test {
 protected:
  MachineRootTest() { problem = buildMachine(mac); }

  std::string read(const std::string& name) const { return folder.read("mac/" + name); }
  bool has(const std::string& name) const { return std::filesystem::exists(mac / name); }

  // Whether a process runs that has this machine's mark in its environment.
  bool marked() const {
    return runChild({"sh", "-c", "grep -qz '^HALVO_MARK=" + mac.string() + "$' /proc/[0-9]*/environ"}).status == 0;
  }

  const TemporaryDirectory folder;
  const std::filesystem::path mac = folder.path() / "mac";
  std::optional<MachineProblem> problem;
};

TEST_F(MachineRootTest, AFreshMachineIsOne) {
  EXPECT_EQ(problem, std::nullopt);
  EXPECT_TRUE(isMachine(mac));
  EXPECT_FALSE(isMachine(folder.path()));
}

TEST_F(MachineRootTest, NamesThatAMacKeepsElsewhereAreLinks) {
  EXPECT_EQ(std::filesystem::read_symlink(mac / "var"), "private/var");
  EXPECT_EQ(std::filesystem::read_symlink(mac / "tmp"), "private/tmp");
  EXPECT_EQ(std::filesystem::read_symlink(mac / "etc"), "private/etc");
}

TEST_F(MachineRootTest, NothingOfTheProductIsInstalled) {
  EXPECT_FALSE(has("Library/Audio/Plug-Ins/HAL/Halvo.driver"));
  EXPECT_TRUE(std::filesystem::is_empty(mac / "Library/LaunchDaemons"));
  EXPECT_TRUE(std::filesystem::is_empty(mac / "Library/LaunchAgents"));
  EXPECT_TRUE(std::filesystem::is_empty(mac / "Library/PrivilegedHelperTools"));
  EXPECT_FALSE(has("private/var/db/halvo"));
}

TEST_F(MachineRootTest, TheApplicationIsThereAndItsHelperRegistered) {
  EXPECT_TRUE(has("Applications/Halvo.app/Contents/MacOS/halvo-app"));
  EXPECT_TRUE(has("Applications/Halvo.app/Contents/MacOS/halvo-helper"));
  EXPECT_THAT(read("Applications/Halvo.app/Contents/Info.plist"), HasSubstr("<string>com.halvo.app</string>"));
  EXPECT_EQ(read("sim/registered-services"),
            "/Applications/Halvo.app/Contents/Library/LaunchDaemons/com.halvo.helper.plist\n");
}

TEST_F(MachineRootTest, HomesBelongToTheirUsers) {
  if (::geteuid() != 0) GTEST_SKIP() << "Only root can give files away.";
  struct stat home {};

  EXPECT_EQ(::stat((mac / "Users/user502").c_str(), &home), 0);

  EXPECT_EQ(home.st_uid, 502U);
}

TEST_F(MachineRootTest, TheApplicationCanBePutBack) {
  std::filesystem::remove_all(mac / "Applications/Halvo.app");
  folder.write("mac/sim/registered-services", "");

  EXPECT_EQ(putApplicationBack(mac), std::nullopt);

  EXPECT_TRUE(has("Applications/Halvo.app/Contents/MacOS/halvo-helper"));
  EXPECT_EQ(read("sim/registered-services"),
            "/Applications/Halvo.app/Contents/Library/LaunchDaemons/com.halvo.helper.plist\n");
}

TEST_F(MachineRootTest, PuttingTheApplicationBackTouchesNothingElse) {
  folder.write("mac/sim/audio-devices", "1\n");

  EXPECT_EQ(putApplicationBack(mac), std::nullopt);

  EXPECT_EQ(read("sim/audio-devices"), "1\n");
}

// Every way of entering, where this host has it: the last one, without a process namespace, ends what it has started by
// itself.
class EntryTest : public MachineRootTest, public testing::WithParamInterface<EntryWay> {
 protected:
  void SetUp() override {
    if (const auto obstacle = obstacleOf(GetParam(), mac)) GTEST_SKIP() << *obstacle;
  }

  CommandResult session(const std::string& script) const {
    return runChild(entryCommand(GetParam(), mac, {"/sbin/launchd", "--session", "/", "0", "/bin/sh", "-c", script}));
  }
};

TEST_P(EntryTest, RunsACommandAndPassesItsStatusOn) {
  const CommandResult result = session("echo $PWD; exit 5");

  EXPECT_EQ(result.status, 5);
  EXPECT_EQ(result.out, "/\n");
  EXPECT_EQ(result.err, "");
}

TEST_P(EntryTest, JobsRun) {
  const CommandResult result = session("launchctl print system/com.apple.audio.coreaudiod && killall coreaudiod");

  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, HasSubstr("state = running"));
}

TEST_P(EntryTest, TheSystemOfTheHostCannotBeChanged) {
  EXPECT_NE(session("touch /usr/lib/halvo-was-here 2>/dev/null").status, 0);
}

TEST_P(EntryTest, NothingIsLeftRunning) {
  const CommandResult result = session("HALVO_MARK=" + mac.string() + " sleep 1000 & echo started");

  EXPECT_EQ(result.status, 0);
  EXPECT_FALSE(marked());
}

INSTANTIATE_TEST_SUITE_P(Ways, EntryTest, testing::ValuesIn(kEntryWays), [](const auto& way) {
  return way.param == EntryWay::root            ? "Root"
         : way.param == EntryWay::userNamespace ? "UserNamespace"
                                                : "SharedProcesses";
});

TEST_F(MachineRootTest, TerminatingTheProgramEndsEverythingInside) {
  const pid_t program = startProgram({HALVO_SIM_PROGRAM, "run", mac.string(), "--", "/usr/bin/env",
                                      "HALVO_MARK=" + mac.string(), "/bin/sleep", "1000"});
  ASSERT_TRUE(waitUntil([&] { return marked(); }));

  EXPECT_EQ(::kill(program, SIGTERM), 0);
  EXPECT_EQ(::waitpid(program, nullptr, 0), program);

  EXPECT_TRUE(waitUntil([&] { return !marked(); }));
}

TEST(EntryWayTest, AtLeastOneWayWorksOnThisHost) {
  const TemporaryDirectory folder;
  ASSERT_EQ(buildMachine(folder.path() / "mac"), std::nullopt);

  EXPECT_TRUE(!obstacleOf(EntryWay::root, folder.path() / "mac") ||
              !obstacleOf(EntryWay::userNamespace, folder.path() / "mac") ||
              !obstacleOf(EntryWay::sharedProcesses, folder.path() / "mac"));
}

TEST(EntryWayTest, AWayThatFailsSaysWhatBubblewrapSaid) {
  const TemporaryDirectory empty;

  EXPECT_THAT(obstacleOf(EntryWay::userNamespace, empty.path()), Optional(StartsWith("bwrap: ")));
}

TEST(EntryWayTest, TheAdviceSaysWhatToInstall) { EXPECT_THAT(entryAdvice(), HasSubstr("apt-get install bubblewrap")); }

}  // namespace
}  // namespace halvo::sim
