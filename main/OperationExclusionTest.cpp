// Operations that change the machine, asked for at the same time: the staging directory belongs to one of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <future>
#include <iterator>
#include <latch>
#include <mutex>
#include <thread>

#include "HalvoHelper/testing/FakeClock.h"
#include "HalvoHelper/testing/RecordedSystemLog.h"
#include "HalvoHelper/testing/RefusedIdleSleep.h"
#include "HalvoHelper/testing/SignatureReports.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "main/OperationWiring.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kStagingRoot = "/var/db/halvo/install-staging";

// Lets everybody wait in the check of a package until the test opens the gate.
class GatedRunner final : public ProcessRunner {
 public:
  ProcessResult run(const std::string& tool, const std::vector<std::string>& arguments) const override {
    if (tool != "/usr/sbin/pkgutil" || arguments.front() != "--check-signature") return {};
    std::unique_lock guard(lock_);
    ++inside_;
    changed_.notify_all();
    changed_.wait(guard, [this] { return open_; });
    return {0, std::string(kGoodSignatureReport)};
  }

  void waitUntilSomebodyIsInside() const {
    std::unique_lock guard(lock_);
    changed_.wait(guard, [this] { return inside_ > 0; });
  }

  void openGate() const {
    const std::scoped_lock guard(lock_);
    open_ = true;
    changed_.notify_all();
  }

 private:
  mutable std::mutex lock_;
  mutable std::condition_variable changed_;
  mutable int inside_ = 0;     // guarded by lock_
  mutable bool open_ = false;  // guarded by lock_
};

// Notes every change, and whether two installs ever had the staging directory at the same time.
class StagingWatch final : public PrivilegedFS {
 public:
  bool exists(const std::string&) const override { return false; }
  bool remove(const std::string& path) const override {
    note("remove " + path);
    return true;
  }
  bool removeTree(const std::string& path) const override {
    if (path == kStagingRoot) --inside_;
    note("removeTree " + path);
    return true;
  }
  bool copyTree(const std::string&, const std::string&) const override { return true; }
  bool stageFile(const std::string& source, const std::string&) const override {
    note("stage " + source);
    std::this_thread::yield();
    return true;
  }
  bool makeDir(const std::string&) const override { return true; }
  std::vector<std::string> entries(const std::string&) const override { return {}; }
  std::optional<std::int64_t> modifiedDaysAgo(const std::string&) const override { return std::nullopt; }
  bool makePrivateDir(const std::string& path, int) const override {
    if (++inside_ > 1) overlapped_ = true;
    note("make " + path);
    std::this_thread::yield();
    return true;
  }

  std::vector<std::string> notes() const {
    const std::scoped_lock guard(lock_);
    return notes_;
  }
  bool overlapped() const { return overlapped_; }

 private:
  void note(const std::string& what) const {
    const std::scoped_lock guard(lock_);
    notes_.push_back(what);
  }

  mutable std::mutex lock_;
  mutable std::vector<std::string> notes_;  // guarded by lock_
  mutable std::atomic<int> inside_ = 0;
  mutable std::atomic<bool> overlapped_ = false;
};

class SilentAudio final : public AudioDeviceEnumerator {
 public:
  std::vector<bool> runningSomewhereFlags() const override { return {}; }
};

class AnyAuthorizer final : public AdminAuthorizer {
 public:
  bool isAuthorized(std::span<const std::byte>) const override { return true; }
};

class OperationExclusionTest : public testing::Test {
 protected:
  InstallResult install(const std::string& pkgPath) const { return wiring_->runInstall(pkgPath, "{}", true); }

  std::function<void()> whileEnding_ = [] {};
  RecordedSystemLog systemLog_;
  TemporaryDirectory directory_;
  std::shared_ptr<GatedRunner> runner_ = std::make_shared<GatedRunner>();
  std::shared_ptr<StagingWatch> fs_ = std::make_shared<StagingWatch>();
  std::shared_ptr<ActivityTracker> tracker_ = std::make_shared<ActivityTracker>(FakeClock().reader());
  std::shared_ptr<const OperationWiring> wiring_ = std::make_shared<const OperationWiring>(
      SystemAdapters{
          .runner = runner_,
          .launchctl = Launchctl(runner_),
          .fs = fs_,
          .audio = AudioActivity(std::make_shared<const SilentAudio>()),
          .installer = Installer(runner_),
          .verifier = PkgVerifier(runner_),
          .sleep = std::make_shared<const RefusedIdleSleep>(),
          .ending = {.runAfter = [](std::chrono::nanoseconds, const std::function<void()>& work) { work(); },
                     .unregister =
                         [this](std::string_view) {
                           whileEnding_();
                           return std::optional<std::string>();
                         },
                     .exit = [] {}},
      },
      std::make_shared<const AnyAuthorizer>(), true, tracker_,
      OperationFiles{.installLog = directory_.path("install.log"),
                     .uninstallLog = directory_.path("uninstall.log"),
                     .driverPlist = directory_.path("Info.plist")});
};

constexpr const char* kTrusted = "halvo-helper: package trusted: Developer ID Installer: Halvo Audio (QX4TRM2ZL9)";
constexpr const char* kAudioRestart = "halvo-helper: coreaudiod restart rc=0";

constexpr const char* kStagingMade = "make /var/db/halvo/install-staging";
constexpr const char* kFirstStaged = "stage /tmp/first.pkg";
constexpr const char* kStagingRemoved = "removeTree /var/db/halvo/install-staging";

std::vector<std::string> followedBy(const std::vector<std::string>& second, std::vector<std::string> first) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

// Gives an operation that does not wait every chance to show itself.
void letOthersRun() {
  for (int turn = 0; turn < 2000; ++turn) std::this_thread::yield();
}

struct SecondRow {
  const char* name;
  void (*run)(const OperationWiring&);
  std::vector<std::string> changes;
  std::vector<std::string> logLines;
};

class SecondOperation : public OperationExclusionTest, public testing::WithParamInterface<SecondRow> {};

TEST_P(SecondOperation, ChangesNothingUntilTheInstallIsDone) {
  std::latch secondStarted(1);
  std::thread first([&] { install("/tmp/first.pkg"); });
  runner_->waitUntilSomebodyIsInside();
  std::thread second([&] {
    secondStarted.count_down();
    GetParam().run(*wiring_);
  });
  secondStarted.wait();
  letOthersRun();

  const auto notesMeanwhile = fs_->notes();
  const auto logMeanwhile = systemLog_.lines();
  runner_->openGate();
  first.join();
  second.join();

  EXPECT_THAT(notesMeanwhile, ElementsAre(kStagingMade, kFirstStaged));
  EXPECT_THAT(logMeanwhile, IsEmpty());
  EXPECT_EQ(fs_->notes(), followedBy(GetParam().changes, {kStagingMade, kFirstStaged, kStagingRemoved}));
  EXPECT_EQ(systemLog_.lines(), followedBy(GetParam().logLines, {kTrusted, kAudioRestart}));
}

INSTANTIATE_TEST_SUITE_P(
    Table, SecondOperation,
    testing::Values(SecondRow{"Install",
                              [](const OperationWiring& wiring) { wiring.runInstall("/tmp/second.pkg", "{}", true); },
                              {kStagingMade, "stage /tmp/second.pkg", kStagingRemoved},
                              {kTrusted, kAudioRestart}},
                    SecondRow{
                        "Uninstall",
                        [](const OperationWiring& wiring) { wiring.runUninstall(true); },
                        {"remove /Library/LaunchAgents/com.halvo.daemon.plist",
                         "removeTree /Library/Audio/Plug-Ins/HAL/Halvo.driver",
                         "remove /Library/LaunchDaemons/com.halvo.broker.plist",
                         "remove /Library/PrivilegedHelperTools/halvo-broker", "removeTree /private/var/run/halvo",
                         "remove /private/var/tmp/halvo-daemon.lock", "removeTree /var/db/halvo"},
                        {kAudioRestart}},
                    SecondRow{"BundleRemoval",
                              [](const OperationWiring& wiring) { wiring.removeAppBundle("Halvo.app"); },
                              {},
                              {"halvo-helper: refused to remove non-Halvo path Halvo.app"}},
                    SecondRow{"FinalRemoval",
                              [](const OperationWiring& wiring) { wiring.finalizeRemoval(); },
                              {},
                              {"halvo-helper: finalized, booting out com.halvo.helper",
                               "halvo-helper: bootout returned 0, exiting"}}),
    [](const auto& row) { return row.param.name; });

TEST_F(OperationExclusionTest, NothingBeginsWhatTheFinalRemovalWouldCutOff) {
  std::future<InstallResult> late;
  std::vector<std::string> notesMeanwhile;
  runner_->openGate();
  whileEnding_ = [&] {
    late = std::async(std::launch::async, [&] { return install("/tmp/late.pkg"); });
    late.wait_for(std::chrono::milliseconds(30));
    notesMeanwhile = fs_->notes();
  };

  wiring_->finalizeRemoval();

  EXPECT_THAT(notesMeanwhile, IsEmpty());
  EXPECT_EQ(late.get(), InstallResult(InstallOk{{"driver", "broker", "daemon_agent"}}));
}

TEST_F(OperationExclusionTest, PingAndListingDoNotWaitForAnInstall) {
  std::vector<std::string> replies;
  std::thread first([&] { install("/tmp/first.pkg"); });
  runner_->waitUntilSomebodyIsInside();

  wiring_->makeHandler()->ping([&](const std::string& json) { replies.push_back(json); });
  wiring_->makeHandler()->enumerateActiveGuiDomains([&](const std::string& json) { replies.push_back(json); });
  runner_->openGate();
  first.join();

  EXPECT_THAT(replies, ElementsAre(R"({"ok":true,"helper_version":6,"build_abi":1})", R"({"uids":[]})"));
}

TEST_F(OperationExclusionTest, ManyInstallsNeverShareTheStagingDirectory) {
  std::vector<std::thread> threads;
  runner_->openGate();

  std::generate_n(std::back_inserter(threads), 16, [&] { return std::thread([&] { install("/tmp/a.pkg"); }); });
  std::ranges::for_each(threads, &std::thread::join);

  EXPECT_FALSE(fs_->overlapped());
  EXPECT_EQ(std::ranges::count(fs_->notes(), kStagingRemoved), 16);
}

}  // namespace
}  // namespace halvo
