// An operation wiring over doubles that write every call into one list.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "HalvoHelper/testing/FakeClock.h"
#include "HalvoHelper/testing/FixedAudioDevices.h"
#include "HalvoHelper/testing/NotedIdleSleep.h"
#include "HalvoHelper/testing/RecordedSystemLog.h"
#include "HalvoHelper/testing/ScriptedPrivilegedFS.h"
#include "HalvoHelper/testing/ScriptedProcessRunner.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "main/OperationWiring.h"

namespace halvo {

inline const AuthorizationBlob kBlob(32, std::byte{0x5A});

// Answers what the test says and counts how often it is asked.
class ScriptedAuthorizer final : public AdminAuthorizer {
 public:
  bool isAuthorized(std::span<const std::byte> externalForm) const override {
    seen.emplace_back(externalForm.begin(), externalForm.end());
    return answer;
  }

  bool answer = true;
  mutable std::vector<AuthorizationBlob> seen;
};

class WiringBench : public testing::Test {
 protected:
  std::shared_ptr<const OperationWiring> wiring(bool adminRightIsSound = true) {
    return std::make_shared<const OperationWiring>(
        SystemAdapters{
            .runner = runner_,
            .launchctl = Launchctl(runner_),
            .fs = fs_,
            .audio = AudioActivity(audio_),
            .installer = Installer(runner_),
            .verifier = PkgVerifier(runner_),
            .sleep = sleep_,
            .ending = ending(),
        },
        authorizer_, adminRightIsSound, tracker_,
        OperationFiles{.installLog = directory_.path("install.log"),
                       .uninstallLog = directory_.path("uninstall.log"),
                       .driverPlist = directory_.path("Info.plist")});
  }

  const std::vector<std::string>& calls() const { return recorder_->calls; }
  std::string installLog() const { return contentsOf(directory_.path("install.log")); }

  RecordedSystemLog systemLog_;
  std::vector<std::function<void()>> laterWork_;  // what the main queue would run
  std::optional<std::string> unregisterFailure_;
  TemporaryDirectory directory_;
  std::shared_ptr<CallRecorder> recorder_ = std::make_shared<CallRecorder>();
  std::shared_ptr<ScriptedProcessRunner> runner_ = std::make_shared<ScriptedProcessRunner>(recorder_);
  std::shared_ptr<ScriptedPrivilegedFS> fs_ = std::make_shared<ScriptedPrivilegedFS>(recorder_);
  std::shared_ptr<FixedAudioDevices> audio_ = std::make_shared<FixedAudioDevices>(std::vector<bool>(), recorder_);
  std::shared_ptr<NotedIdleSleep> sleep_ = std::make_shared<NotedIdleSleep>();
  std::shared_ptr<ScriptedAuthorizer> authorizer_ = std::make_shared<ScriptedAuthorizer>();
  std::shared_ptr<ActivityTracker> tracker_ = std::make_shared<ActivityTracker>(FakeClock().reader());

 private:
  // Notes each step and ends nothing.
  HelperEnding ending() {
    return {.runAfter =
                [this](std::chrono::nanoseconds delay, std::function<void()> work) {
                  recorder_->calls.push_back("after " + std::to_string(delay / std::chrono::milliseconds(1)) + " ms");
                  laterWork_.push_back(std::move(work));
                },
            .unregister =
                [this](std::string_view plistName) {
                  recorder_->calls.push_back("unregister " + std::string(plistName));
                  return unregisterFailure_;
                },
            .exit = [this] { recorder_->calls.emplace_back("exit"); }};
  }
};

}  // namespace halvo
