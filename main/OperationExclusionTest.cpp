// Two installs at the same time: the staging directory belongs to one of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <iterator>
#include <latch>
#include <mutex>
#include <thread>

#include "HalvoHelper/testing/FakeClock.h"
#include "HalvoHelper/testing/RecordedSystemLog.h"
#include "HalvoHelper/testing/SignatureReports.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "main/OperationWiring.h"

namespace halvo {
namespace {

using testing::ElementsAre;

// Whose package was checked, in which thread; lets everybody wait in the check until the test opens the gate.
class GatedRunner final : public ProcessRunner {
 public:
  ProcessResult run(const std::string& tool, const std::vector<std::string>& /*arguments*/) const override {
    if (tool != "/usr/sbin/pkgutil") return {};
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

// Notes which package's install is between making and removing the staging directory, and whether two ever were.
class StagingWatch final : public PrivilegedFS {
 public:
  bool exists(const std::string&) const override { return false; }
  bool remove(const std::string&) const override { return true; }
  bool removeTree(const std::string&) const override {
    --inside_;
    note("end");
    return true;
  }
  bool copyTree(const std::string&, const std::string&) const override { return true; }
  bool stageFile(const std::string& source, const std::string&) const override {
    note(source);
    std::this_thread::yield();
    return true;
  }
  bool makeDir(const std::string&) const override { return true; }
  std::vector<std::string> entries(const std::string&) const override { return {}; }
  std::optional<std::int64_t> modifiedDaysAgo(const std::string&) const override { return std::nullopt; }
  bool makePrivateDir(const std::string&, int) const override {
    if (++inside_ > 1) overlapped_ = true;
    note("begin");
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
      },
      std::make_shared<const AnyAuthorizer>(), true, tracker_,
      OperationLogPaths{.install = directory_.path("install.log"), .uninstall = directory_.path("uninstall.log")});
};

TEST_F(OperationExclusionTest, SecondInstallMakesNoCallUntilTheFirstIsDone) {
  std::latch secondStarted(1);
  std::jthread first([&] { install("/tmp/first.pkg"); });
  runner_->waitUntilSomebodyIsInside();
  std::jthread second([&] {
    secondStarted.count_down();
    install("/tmp/second.pkg");
  });
  secondStarted.wait();

  const auto notesWhileFirstRuns = fs_->notes();
  runner_->openGate();
  first.join();
  second.join();

  EXPECT_THAT(notesWhileFirstRuns, ElementsAre("begin", "/tmp/first.pkg"));
  EXPECT_THAT(fs_->notes(), ElementsAre("begin", "/tmp/first.pkg", "end", "begin", "/tmp/second.pkg", "end"));
}

TEST_F(OperationExclusionTest, PingAndListingDoNotWaitForAnInstall) {
  std::vector<std::string> replies;
  std::jthread first([&] { install("/tmp/first.pkg"); });
  runner_->waitUntilSomebodyIsInside();

  wiring_->makeHandler()->ping([&](const std::string& json) { replies.push_back(json); });
  wiring_->makeHandler()->enumerateActiveGuiDomains([&](const std::string& json) { replies.push_back(json); });
  runner_->openGate();

  EXPECT_THAT(replies, ElementsAre(R"({"ok":true,"helper_version":6,"build_abi":1})", R"({"uids":[]})"));
}

TEST_F(OperationExclusionTest, ManyInstallsNeverShareTheStagingDirectory) {
  std::vector<std::jthread> threads;
  runner_->openGate();

  std::generate_n(std::back_inserter(threads), 16, [&] { return std::jthread([&] { install("/tmp/a.pkg"); }); });
  threads.clear();

  EXPECT_FALSE(fs_->overlapped());
  EXPECT_EQ(std::ranges::count(fs_->notes(), "end"), 16);
}

}  // namespace
}  // namespace halvo
