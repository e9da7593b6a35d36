// The product leaves: parts, application bundle, and at last the helper itself.
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>

#include <filesystem>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "tests/Scenario.h"

namespace halvo::sim {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* kRemovedReply = R"({"code":"ok","gui_app_path":"/Applications/Halvo.app"})";
constexpr const char* kIncompleteReply = R"({"code":"incomplete","log_path":"/var/log/halvo-uninstall.log"})";
constexpr const char* kUninstallLog = "/var/log/halvo-uninstall.log";

class RemovalScenario : public Scenario {
 protected:
  void installed() {
    start();
    ASSERT_EQ(reply(ProductMachine::install(machine.package({}))), kInstalledReply);
  }

  bool stands(const std::string& path) { return std::filesystem::exists(mac().path(path)); }

  // The tools that ran since `count` calls.
  std::vector<std::string> toolRunsSince(std::size_t count) {
    std::vector<std::string> runs = toolRuns();
    runs.erase(runs.begin(), runs.begin() + static_cast<std::ptrdiff_t>(count));
    return runs;
  }
};

using UninstallScenario = RemovalScenario;

TEST_F(UninstallScenario, RunsExactlyTheseToolsInThisOrder) {
  installed();
  const std::size_t before = toolRuns().size();

  EXPECT_EQ(reply({"prepare-removal"}), kRemovedReply);

  EXPECT_THAT(toolRunsSince(before),
              ElementsAre("/usr/bin/dscl . -list /Users UniqueID -> 0", "/bin/launchctl print gui/501 -> 0",
                          "/bin/launchctl print gui/502 -> 112", "/bin/launchctl bootout gui/501/com.halvo.daemon -> 0",
                          "/usr/bin/killall coreaudiod -> 0", "/bin/launchctl bootout system/com.halvo.broker -> 0",
                          "/usr/sbin/pkgutil --forget com.halvo.pkg -> 0"));
}

TEST_F(UninstallScenario, LeavesNothingOfThePartsTheirJobsOrTheirReceipt) {
  installed();

  machine.app({"prepare-removal"});

  EXPECT_THAT(machine.components(), IsEmpty());
  EXPECT_FALSE(machine.job("system", "com.halvo.broker").has_value());
  EXPECT_FALSE(machine.job("gui/501", "com.halvo.daemon").has_value());
  EXPECT_FALSE(stands("/var/db/halvo"));
  EXPECT_FALSE(stands("/private/var/run/halvo"));
  EXPECT_EQ(mac().run(0, {"/usr/sbin/pkgutil", "--pkgs"}).out, "");
  EXPECT_THAT(messagesIn(kUninstallLog), ElementsAre("coreaudiod restart rc=0"));
}

TEST_F(UninstallScenario, TakesTheAgentFromEveryGraphicalSession) {
  mac().writeState("gui-sessions", "501\n502\n");
  installed();
  ASSERT_TRUE(machine.job("gui/502", "com.halvo.daemon").has_value());

  machine.app({"prepare-removal"});

  EXPECT_FALSE(machine.job("gui/501", "com.halvo.daemon").has_value());
  EXPECT_FALSE(machine.job("gui/502", "com.halvo.daemon").has_value());
}

TEST_F(UninstallScenario, AReinstallBringsTheAgentsBack) {
  mac().writeState("gui-sessions", "501\n502\n");
  installed();
  machine.app({"prepare-removal"});

  EXPECT_EQ(reply(ProductMachine::install(machine.package({.name = "again"}))), kInstalledReply);

  EXPECT_TRUE(machine.job("gui/501", "com.halvo.daemon").has_value());
  EXPECT_TRUE(machine.job("gui/502", "com.halvo.daemon").has_value());
}

TEST_F(UninstallScenario, OfAMachineWithoutTheProductIsOk) {
  start();

  EXPECT_EQ(reply({"prepare-removal"}), kRemovedReply);
}

TEST_F(UninstallScenario, TwiceIsOkTwice) {
  installed();

  EXPECT_EQ(reply({"prepare-removal"}), kRemovedReply);
  EXPECT_EQ(reply({"prepare-removal"}), kRemovedReply);
}

TEST_F(UninstallScenario, AudioThatRunsRefusesItAndChangesNothing) {
  installed();
  mac().writeState("audio-devices", "1\n");
  const TreeSnapshot before = machine.components();
  const std::size_t toolsBefore = toolRuns().size();

  EXPECT_EQ(reply({"prepare-removal"}), R"({"code":"audio_active"})");

  EXPECT_THAT(changesBetween(before, machine.components()), IsEmpty());
  EXPECT_THAT(toolRunsSince(toolsBefore), IsEmpty());
  EXPECT_FALSE(stands(kUninstallLog));
}

TEST_F(UninstallScenario, AudioThatRunsIsInterruptedWhenThatIsAccepted) {
  installed();
  mac().writeState("audio-devices", "1\n");

  EXPECT_EQ(reply({"prepare-removal", "--accept-audio-interruption"}), kRemovedReply);
}

TEST_F(UninstallScenario, ALeftoverIsReportedAndNamedInTheLog) {
  installed();
  // A folder where the broker's program should be cannot be unlinked.
  std::filesystem::remove(mac().path("/Library/PrivilegedHelperTools/halvo-broker"));
  std::filesystem::create_directory(mac().path("/Library/PrivilegedHelperTools/halvo-broker"));

  EXPECT_EQ(reply({"prepare-removal"}), kIncompleteReply);

  EXPECT_THAT(messagesIn(kUninstallLog),
              ElementsAre("coreaudiod restart rc=0",
                          "uninstall incomplete; leftover: /Library/PrivilegedHelperTools/halvo-broker"));
  EXPECT_FALSE(stands("/var/db/halvo"));
}

TEST_F(UninstallScenario, WithoutAGrantNothingRuns) {
  installed();
  const std::size_t before = toolRuns().size();

  EXPECT_EQ(reply({"prepare-removal", "--without-grant"}), kUnauthorizedReply);
  EXPECT_EQ(reply({"legacy", "prepare-removal"}), kUnauthorizedReply);

  EXPECT_THAT(toolRunsSince(before), IsEmpty());
  EXPECT_THAT(machine.components(), testing::Not(IsEmpty()));
}

// ---- The application bundle

class BundleScenario : public RemovalScenario {
 protected:
  BundleScenario() { start(); }

  // A folder with one of the product's executables in it.
  void makeBundle(const std::string& path) {
    std::filesystem::create_directories(mac().path(path));
    std::filesystem::create_directories(mac().path(path) / "Contents/MacOS");
    mac().writeFile(path + "/Contents/MacOS/halvo-daemon", "marker");
  }
};

TEST_F(BundleScenario, TheApplicationIsRemovedWhileItAsks) {
  EXPECT_EQ(reply({"remove-bundle", "/Applications/Halvo.app"}), "true");

  EXPECT_FALSE(stands("/Applications/Halvo.app"));
}

TEST_F(BundleScenario, ATrailingSlashChangesNothing) {
  makeBundle("/Users/user501/Halvo.app");

  EXPECT_EQ(reply({"remove-bundle", "/Users/user501/Halvo.app/"}), "true");

  EXPECT_FALSE(stands("/Users/user501/Halvo.app"));
}

TEST_F(BundleScenario, ThroughALinkTheTargetIsRemovedAndTheLinkStays) {
  makeBundle("/Users/user501/Halvo.app");
  std::filesystem::create_symlink("/Users/user501/Halvo.app", mac().path("/tmp") / "Halvo.app");

  EXPECT_EQ(reply({"remove-bundle", "/tmp/Halvo.app"}), "true");

  EXPECT_FALSE(stands("/Users/user501/Halvo.app"));
  EXPECT_TRUE(std::filesystem::is_symlink(mac().path("/tmp") / "Halvo.app"));
}

TEST_F(BundleScenario, ALinkToAFolderOfAnotherNameIsRefused) {
  makeBundle("/Library/Victim");
  std::filesystem::create_symlink("/Library/Victim", mac().path("/tmp") / "Halvo.app");

  EXPECT_EQ(reply({"remove-bundle", "/tmp/Halvo.app"}), "false");

  EXPECT_TRUE(stands("/Library/Victim/Contents/MacOS/halvo-daemon"));
  EXPECT_THAT(helperLog(), Contains("halvo-helper: refused to remove (failed realpath re-validation) /tmp/Halvo.app"));
}

TEST_F(BundleScenario, LinksInsideABundleAreRemovedAndNotFollowed) {
  makeBundle("/Users/user501/Halvo.app");
  mac().writeFile("/Library/canary", "alive");
  std::filesystem::create_symlink("/Library", mac().path("/Users/user501/Halvo.app/Contents") / "link");

  EXPECT_EQ(reply({"remove-bundle", "/Users/user501/Halvo.app"}), "true");

  EXPECT_EQ(mac().readFile("/Library/canary"), "alive");
}

TEST_F(BundleScenario, FilesOfOtherOwnersInABundleGoToo) {
  makeBundle("/Users/user501/Halvo.app");
  mac().run(0, {"/bin/chown", "-R", "502", "/Users/user501/Halvo.app/Contents/MacOS"});
  mac().run(0, {"/bin/chmod", "-R", "000", "/Users/user501/Halvo.app/Contents/MacOS"});

  EXPECT_EQ(reply({"remove-bundle", "/Users/user501/Halvo.app"}), "true");

  EXPECT_FALSE(stands("/Users/user501/Halvo.app"));
}

// A file that not even root can remove while this lives.
class ImmutableFile {
 public:
  explicit ImmutableFile(const std::filesystem::path& path) : file_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    taken_ = setFlags(FS_IMMUTABLE_FL);
  }
  ~ImmutableFile() { setFlags(0); }
  ImmutableFile(const ImmutableFile&) = delete;
  ImmutableFile& operator=(const ImmutableFile&) = delete;

  // Whether the file system knows such files and lets this process make one.
  [[nodiscard]] bool taken() const { return taken_; }

 private:
  bool setFlags(int flags) const { return ::ioctl(file_.get(), FS_IOC_SETFLAGS, &flags) == 0; }

  UniqueDescriptor file_;
  bool taken_ = false;
};

TEST_F(BundleScenario, AnImmutableFileStaysWithTheFoldersAroundItAndTheAnswerIsFalse) {
  makeBundle("/Users/user501/Halvo.app");
  mac().writeFile("/Users/user501/Halvo.app/Contents/Info.plist", "goes");
  mac().writeFile("/Users/user501/Halvo.app/Contents/locked", "stays");
  mac().writeFile("/Users/user501/Halvo.appendix", "outside");
  const ImmutableFile locked(mac().path("/Users/user501/Halvo.app/Contents/locked"));
  if (!locked.taken()) GTEST_SKIP() << "this file system has no immutable files, or they are not for this user";

  EXPECT_EQ(reply({"remove-bundle", "/Users/user501/Halvo.app"}), "false");

  EXPECT_EQ(mac().readFile("/Users/user501/Halvo.app/Contents/locked"), "stays");
  EXPECT_FALSE(stands("/Users/user501/Halvo.app/Contents/Info.plist"));
  EXPECT_FALSE(stands("/Users/user501/Halvo.app/Contents/MacOS"));
  EXPECT_EQ(mac().readFile("/Users/user501/Halvo.appendix"), "outside");
}

TEST_F(BundleScenario, WithoutAGrantTheApplicationStays) {
  EXPECT_EQ(reply({"remove-bundle", "/Applications/Halvo.app", "--without-grant"}), "false");
  EXPECT_EQ(reply({"legacy", "remove-bundle", "/Applications/Halvo.app"}), "false");

  EXPECT_TRUE(stands("/Applications/Halvo.app/Contents/MacOS/halvo-app"));
}

struct RefusedPath {
  const char* name;
  std::string path;
};

class RefusedBundlePath : public BundleScenario, public testing::WithParamInterface<RefusedPath> {};

TEST_P(RefusedBundlePath, IsAnsweredFalseAndLoggedAsGiven) {
  EXPECT_EQ(reply({"remove-bundle", GetParam().path}), "false");

  EXPECT_TRUE(stands("/Applications/Halvo.app/Contents/MacOS/halvo-app"));
  EXPECT_THAT(helperLog(), Contains(StartsWith("halvo-helper: refused to remove non-Halvo path")));
}

INSTANTIATE_TEST_SUITE_P(Table, RefusedBundlePath,
                         testing::Values(RefusedPath{"ParentStep", "/Applications/../Applications/Halvo.app"},
                                         RefusedPath{"WrongName", "/Applications/Safari.app"},
                                         RefusedPath{"OtherCase", "/Applications/halvo.app"},
                                         RefusedPath{"NoMarker", "/Users/user502/Halvo.app"}, RefusedPath{"Root", "/"},
                                         RefusedPath{"TooLong", "/" + std::string(5000, 'x') + "/Halvo.app"},
                                         RefusedPath{"Quotes", "/Applications/\"Halvo.app\""}),
                         [](const auto& row) { return std::string(row.param.name); });

// ---- The helper itself

class FinalRemovalScenario : public RemovalScenario {
 protected:
  bool helperIsGone() { return !machine.job("system", "com.halvo.helper").has_value(); }
};

TEST_F(FinalRemovalScenario, TheAnswerComesFirstAndThenTheHelperIsGone) {
  start();

  EXPECT_EQ(reply({"finalize"}), "true");

  EXPECT_TRUE(waitUntil([&] { return helperIsGone(); }));
  EXPECT_THAT(helperLog(), Contains("halvo-helper: finalized, booting out com.halvo.helper"));
  EXPECT_EQ(mac().readState("registered-services"), "");
}

TEST_F(FinalRemovalScenario, AfterwardsNobodyAnswers) {
  start();
  machine.app({"finalize"});
  ASSERT_TRUE(waitUntil([&] { return helperIsGone(); }));

  const CommandResult ping = machine.app({"ping"});

  EXPECT_EQ(ping.out, "");
  EXPECT_NE(ping.status, 0);
}

TEST_F(FinalRemovalScenario, RegisteredAgainTheHelperServesAndInstalls) {
  start();
  machine.app({"finalize"});
  ASSERT_TRUE(waitUntil([&] { return helperIsGone(); }));

  machine.reinstallApplication();

  EXPECT_EQ(reply({"ping"}), kPingReply);
  EXPECT_EQ(reply(ProductMachine::install(machine.package({}))), kInstalledReply);
}

TEST_F(FinalRemovalScenario, ARequestBeforeTheDelayIsOverIsStillServed) {
  // Slowed down, the delay lasts long enough for a request of any speed.
  mac().writeState("clock-rate", "0.05\n");
  start();
  machine.app({"finalize"});

  EXPECT_EQ(reply({"ping"}), kPingReply);

  EXPECT_FALSE(helperIsGone());
}

TEST_F(FinalRemovalScenario, ARunningInstallIsCompletedFirst) {
  start();
  auto install =
      machine.appAsync(ProductMachine::install(machine.package({.extra = {"--postinstall", waitingScript(mac())}})));
  ASSERT_TRUE(waitUntil([&] { return stands("/Library/LaunchAgents/com.halvo.daemon.plist"); }));

  EXPECT_EQ(reply({"finalize"}), "true");
  EXPECT_FALSE(waitUntil([&] { return helperIsGone(); }, std::chrono::milliseconds(800)));
  letItGo(mac());

  EXPECT_EQ(install.get().out, std::string(kInstalledReply) + "\n");
  EXPECT_TRUE(waitUntil([&] { return helperIsGone(); }));
}

TEST_F(FinalRemovalScenario, WithoutAGrantTheHelperStays) {
  start();

  EXPECT_EQ(reply({"finalize", "--without-grant"}), "false");
  machine.app({"legacy", "finalize"});

  EXPECT_EQ(reply({"ping"}), kPingReply);
  EXPECT_FALSE(helperIsGone());
}

TEST_F(FinalRemovalScenario, TheJobTableLosesTheProductAndNothingElse) {
  installed();
  machine.app({"prepare-removal"});
  machine.app({"finalize"});
  ASSERT_TRUE(waitUntil([&] { return helperIsGone(); }));

  const std::vector<JobState> jobs = mac().jobs();

  EXPECT_THAT(jobs, ElementsAre(testing::Field(&JobState::label, "com.apple.audio.coreaudiod")));
}

}  // namespace
}  // namespace halvo::sim
