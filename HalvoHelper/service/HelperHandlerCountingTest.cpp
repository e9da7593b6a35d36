// How the handler counts the calls in flight.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "HalvoHelper/service/HelperHandler.h"
#include "HalvoHelper/testing/HandlerBench.h"

namespace halvo {
namespace {

using testing::ElementsAre;

class HelperHandlerCountingTest : public HandlerBench {};

TEST_F(HelperHandlerCountingTest, CallIsInFlightWhileAuthorizationIsChecked) {
  HelperHandler(operations()).installSystemPkg(kBlob, "/tmp/a.pkg", "{}", false, textReply());

  EXPECT_FALSE(idleWhileAuthorizing_);
}

TEST_F(HelperHandlerCountingTest, CallIsInFlightWhileItsReplyIsSent) {
  bool idleWhileReplying = true;

  HelperHandler(operations()).ping([&](const std::string&) { idleWhileReplying = tracker_->isIdle(0.0); });

  EXPECT_FALSE(idleWhileReplying);
  EXPECT_TRUE(tracker_->isIdle(0.0));
}

TEST_F(HelperHandlerCountingTest, CountIsBackAfterEveryMethod) {
  HelperHandler handler(operations());

  handler.ping(textReply());
  handler.enumerateActiveGuiDomains(textReply());
  handler.prepareForRemoval(true, textReply());
  handler.removeAppBundle("/x", boolReply());
  handler.finalizeRemoval();
  handler.installSystemPkg("/x", "{}", true, textReply());
  handler.prepareForRemoval(kBlob, true, textReply());
  handler.removeAppBundle(kBlob, "/x", boolReply());
  handler.finalizeRemoval(kBlob, boolReply());
  handler.installSystemPkg(kBlob, "/x", "{}", true, textReply());

  EXPECT_TRUE(tracker_->isIdle(0.0));
}

TEST_F(HelperHandlerCountingTest, CountOfAnotherCallInFlightIsLeftAlone) {
  tracker_->begin();

  HelperHandler(operations()).ping(textReply());

  EXPECT_FALSE(tracker_->isIdle(0.0));
}

TEST_F(HelperHandlerCountingTest, CountIsBackAfterAnOperationThatThrew) {
  HelperOperations failing = operations();
  failing.enumerate = []() -> std::vector<std::int64_t> { throw std::runtime_error("out of memory"); };

  EXPECT_THROW(HelperHandler(failing).enumerateActiveGuiDomains(textReply()), std::runtime_error);

  EXPECT_TRUE(tracker_->isIdle(0.0));
}

TEST_F(HelperHandlerCountingTest, EveryMethodWorksWithoutATracker) {
  HelperOperations untracked = operations();
  untracked.activity = nullptr;
  untracked.authorize = [](const AuthorizationBlob&) { return true; };
  HelperHandler handler(untracked);

  handler.ping(textReply());
  handler.enumerateActiveGuiDomains(textReply());
  handler.prepareForRemoval(true, textReply());
  handler.removeAppBundle("/x", boolReply());
  handler.finalizeRemoval();
  handler.installSystemPkg("/x", "{}", true, textReply());
  handler.prepareForRemoval(kBlob, true, textReply());
  handler.removeAppBundle(kBlob, "/x", boolReply());
  handler.finalizeRemoval(kBlob, boolReply());
  handler.installSystemPkg(kBlob, "/x", "{}", true, textReply());

  EXPECT_THAT(calls(),
              ElementsAre(R"(reply {"ok":true,"helper_version":6,"build_abi":1})", "enumerate", R"(reply {"uids":[]})",
                          R"(reply {"code":"unauthorized"})", "reply false", R"(reply {"code":"unauthorized"})",
                          "uninstall true", R"(reply {"code":"ok","gui_app_path":"/Applications/Halvo.app"})",
                          "removeBundle /x", "reply true", "reply true", "finalize", "install /x {} true",
                          R"(reply {"code":"ok","changed":["driver","broker","daemon_agent"]})"));
}

}  // namespace
}  // namespace halvo
