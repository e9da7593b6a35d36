// Operations that note that they were called, for tests of the handler on top of them.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "HalvoHelper/service/HelperHandler.h"
#include "HalvoHelper/testing/CallRecorder.h"
#include "HalvoHelper/testing/FakeClock.h"

namespace halvo {

inline const AuthorizationBlob kBlob = {std::byte{0x01}, std::byte{0x00}, std::byte{0xFF}};

inline std::string word(bool flag) { return flag ? "true" : "false"; }

// A handler's operations, its replies and its tracker, all of which write into one list. The clock writes "clock" at
// each begin and end of a call, so that the bracket shows among the calls.
class HandlerBench : public testing::Test {
 protected:
  HandlerBench() { recorder_->calls.clear(); }

  HelperOperations operations() {
    return {
        .enumerate = [this] { return note("enumerate"), uids_; },
        .uninstall = [this](bool accept) { return note("uninstall " + word(accept)), uninstallResult_; },
        .removeBundle = [this](const std::string& path) { return note("removeBundle " + path), bundleRemoved_; },
        .finalize = [this] { note("finalize"); },
        .install =
            [this](const std::string& pkgPath, const std::string& manifest, bool accept) {
              return note("install " + pkgPath + " " + manifest + " " + word(accept)), installResult_;
            },
        .authorize =
            [this](const AuthorizationBlob& blob) {
              idleWhileAuthorizing_ = tracker_->isIdle(0.0);
              return note("authorize " + std::to_string(blob.size())), seenBlob_ = blob, authorized_;
            },
        .activity = tracker_,
    };
  }

  TextReply textReply() {
    return [this](const std::string& json) { note("reply " + json); };
  }
  BoolReply boolReply() {
    return [this](bool succeeded) { note("reply " + word(succeeded)); };
  }

  void note(const std::string& call) { recorder_->calls.push_back(call); }
  const std::vector<std::string>& calls() const { return recorder_->calls; }

  std::shared_ptr<CallRecorder> recorder_ = std::make_shared<CallRecorder>();
  FakeClock clock_{1000.0, recorder_};
  std::shared_ptr<ActivityTracker> tracker_ = std::make_shared<ActivityTracker>(clock_.reader());

  bool authorized_ = true;
  bool bundleRemoved_ = true;
  std::vector<std::int64_t> uids_;
  UninstallResult uninstallResult_ = UninstallOk{"/Applications/Halvo.app"};
  InstallResult installResult_ = InstallOk{{"driver", "broker", "daemon_agent"}};
  AuthorizationBlob seenBlob_;
  bool idleWhileAuthorizing_ = true;
};

}  // namespace halvo
