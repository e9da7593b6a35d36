#include "HalvoHelper/service/HelperHandler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

#include "HalvoHelper/testing/HandlerBench.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_default_constructible_v<HelperHandler>, "a handler without operations could only fail");
static_assert(!std::is_copy_constructible_v<HelperHandler>);

class HelperHandlerTest : public HandlerBench {};

TEST_F(HelperHandlerTest, PingIsAnsweredWithTheVersionAndCountsAsACall) {
  HelperHandler(operations()).ping(textReply());

  EXPECT_THAT(calls(), ElementsAre("clock", R"(reply {"ok":true,"helper_version":6,"build_abi":1})", "clock"));
}

TEST_F(HelperHandlerTest, PingNamesTheBuildAbiItWasMadeWith) {
  HelperOperations other = operations();
  other.buildABI = 42;

  HelperHandler(other).ping(textReply());

  EXPECT_THAT(calls(), ElementsAre("clock", R"(reply {"ok":true,"helper_version":6,"build_abi":42})", "clock"));
}

TEST_F(HelperHandlerTest, GuiDomainsNeedNoAuthorization) {
  uids_ = {501, 502};

  HelperHandler(operations()).enumerateActiveGuiDomains(textReply());

  EXPECT_THAT(calls(), ElementsAre("clock", "enumerate", R"(reply {"uids":[501,502]})", "clock"));
}

TEST_F(HelperHandlerTest, GuiDomainsMayBeNone) {
  HelperHandler(operations()).enumerateActiveGuiDomains(textReply());

  EXPECT_THAT(calls(), ElementsAre("clock", "enumerate", R"(reply {"uids":[]})", "clock"));
}

TEST_F(HelperHandlerTest, FirstGenerationRemovalIsRefusedAndOnlyCounted) {
  HelperHandler(operations()).prepareForRemoval(true, textReply());

  EXPECT_THAT(calls(), ElementsAre("clock", R"(reply {"code":"unauthorized"})", "clock"));
}

TEST_F(HelperHandlerTest, FirstGenerationBundleRemovalIsRefusedAndOnlyCounted) {
  HelperHandler(operations()).removeAppBundle("/Applications/Halvo.app", boolReply());

  EXPECT_THAT(calls(), ElementsAre("clock", "reply false", "clock"));
}

TEST_F(HelperHandlerTest, FirstGenerationFinalRemovalDoesNothingAtAll) {
  HelperHandler(operations()).finalizeRemoval();

  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(HelperHandlerTest, FirstGenerationInstallIsRefusedAndOnlyCounted) {
  HelperHandler(operations()).installSystemPkg("/tmp/a.pkg", "{}", true, textReply());

  EXPECT_THAT(calls(), ElementsAre("clock", R"(reply {"code":"unauthorized"})", "clock"));
}

TEST_F(HelperHandlerTest, AuthorizedRemovalRunsOnceBetweenAuthorizationAndReply) {
  HelperHandler(operations()).prepareForRemoval(kBlob, false, textReply());

  EXPECT_THAT(calls(), ElementsAre("clock", "authorize 3", "uninstall false",
                                   R"(reply {"code":"ok","gui_app_path":"/Applications/Halvo.app"})", "clock"));
}

TEST_F(HelperHandlerTest, RemovalIsToldThatAudioMayBeInterrupted) {
  uninstallResult_ = UninstallAudioActive{};

  HelperHandler(operations()).prepareForRemoval(kBlob, true, textReply());

  EXPECT_THAT(calls(),
              ElementsAre("clock", "authorize 3", "uninstall true", R"(reply {"code":"audio_active"})", "clock"));
}

TEST_F(HelperHandlerTest, DeniedRemovalNeverRuns) {
  authorized_ = false;

  HelperHandler(operations()).prepareForRemoval(kBlob, true, textReply());

  EXPECT_THAT(calls(), ElementsAre("clock", "authorize 3", R"(reply {"code":"unauthorized"})", "clock"));
}

TEST_F(HelperHandlerTest, AuthorizedBundleRemovalRepliesWhatItAnswers) {
  HelperHandler(operations()).removeAppBundle(kBlob, "/Applications/Halvo.app", boolReply());

  EXPECT_THAT(calls(),
              ElementsAre("clock", "authorize 3", "removeBundle /Applications/Halvo.app", "reply true", "clock"));
}

TEST_F(HelperHandlerTest, FailedBundleRemovalRepliesFalse) {
  bundleRemoved_ = false;

  HelperHandler(operations()).removeAppBundle(kBlob, "/Applications/Halvo.app", boolReply());

  EXPECT_THAT(calls(),
              ElementsAre("clock", "authorize 3", "removeBundle /Applications/Halvo.app", "reply false", "clock"));
}

TEST_F(HelperHandlerTest, DeniedBundleRemovalNeverRuns) {
  authorized_ = false;

  HelperHandler(operations()).removeAppBundle(kBlob, "/Applications/Halvo.app", boolReply());

  EXPECT_THAT(calls(), ElementsAre("clock", "authorize 3", "reply false", "clock"));
}

TEST_F(HelperHandlerTest, FinalRemovalRepliesBeforeItActs) {
  HelperHandler(operations()).finalizeRemoval(kBlob, boolReply());

  EXPECT_THAT(calls(), ElementsAre("clock", "authorize 3", "reply true", "finalize", "clock"));
}

TEST_F(HelperHandlerTest, DeniedFinalRemovalNeverRuns) {
  authorized_ = false;

  HelperHandler(operations()).finalizeRemoval(kBlob, boolReply());

  EXPECT_THAT(calls(), ElementsAre("clock", "authorize 3", "reply false", "clock"));
}

TEST_F(HelperHandlerTest, AuthorizedInstallRunsOnceBetweenAuthorizationAndReply) {
  HelperHandler(operations()).installSystemPkg(kBlob, "/tmp/a.pkg", "{}", false, textReply());

  EXPECT_THAT(calls(), ElementsAre("clock", "authorize 3", "install /tmp/a.pkg {} false",
                                   R"(reply {"code":"ok","changed":["driver","broker","daemon_agent"]})", "clock"));
}

TEST_F(HelperHandlerTest, InstallGetsItsTextsUnchanged) {
  const std::string oddPath("/tmp/\xF0\x9F\x94\x8A \"a\"\n\0.pkg", 18);

  HelperHandler(operations()).installSystemPkg(kBlob, oddPath, "not json", true, textReply());

  EXPECT_EQ(calls().at(2), "install " + oddPath + " not json true");
}

TEST_F(HelperHandlerTest, RefusedInstallIsRepliedAsItEnded) {
  installResult_ = InstallUntrustedPackage{HalvoPkgDistrust::wrongTeam};

  HelperHandler(operations()).installSystemPkg(kBlob, "/tmp/a.pkg", "{}", false, textReply());

  EXPECT_EQ(calls().at(3), R"(reply {"code":"untrusted_package","reason":"wrong_team"})");
}

TEST_F(HelperHandlerTest, DeniedInstallNeverRuns) {
  authorized_ = false;

  HelperHandler(operations()).installSystemPkg(kBlob, "/tmp/a.pkg", "{}", true, textReply());

  EXPECT_THAT(calls(), ElementsAre("clock", "authorize 3", R"(reply {"code":"unauthorized"})", "clock"));
}

TEST_F(HelperHandlerTest, AuthorizationSeesTheBytesOfThisMessage) {
  HelperHandler(operations()).finalizeRemoval(kBlob, boolReply());

  EXPECT_EQ(seenBlob_, kBlob);
}

TEST_F(HelperHandlerTest, AnApprovalIsNotRememberedForTheNextMessage) {
  HelperHandler handler(operations());
  handler.removeAppBundle(kBlob, "/Applications/Halvo.app", boolReply());
  recorder_->calls.clear();
  authorized_ = false;

  handler.installSystemPkg(kBlob, "/tmp/a.pkg", "{}", false, textReply());

  EXPECT_THAT(calls(), ElementsAre("clock", "authorize 3", R"(reply {"code":"unauthorized"})", "clock"));
}

TEST_F(HelperHandlerTest, AuthorizationIsAskedEvenForNoBytes) {
  HelperHandler(operations()).removeAppBundle(AuthorizationBlob(), "/x", boolReply());

  EXPECT_THAT(calls(), ElementsAre("clock", "authorize 0", "removeBundle /x", "reply true", "clock"));
}

TEST(HelperOperationsTest, BuildAbiIsOneUnlessSaidOtherwise) { EXPECT_EQ(HelperOperations().buildABI, 1); }

TEST(PingReplyTest, HoldsNoOtherMember) {
  EXPECT_EQ(halvoPingReplyJSON(1), R"({"ok":true,"helper_version":6,"build_abi":1})");
}

TEST(PingReplyTest, WritesTheWholeRangeOfBuildAbis) {
  EXPECT_EQ(halvoPingReplyJSON(std::numeric_limits<std::int64_t>::min()),
            R"({"ok":true,"helper_version":6,"build_abi":-9223372036854775808})");
}

}  // namespace
}  // namespace halvo
