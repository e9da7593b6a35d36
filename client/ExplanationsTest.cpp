#include "client/Explanations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace halvo {
namespace {

using testing::HasSubstr;

struct ReplyRow {
  const char* name;
  const char* reply;
  ExitStatus status;
  const char* words;
};

class TextReplyExplanation : public testing::TestWithParam<ReplyRow> {};

TEST_P(TextReplyExplanation, NamesTheStatusAndWhatToDo) {
  const Explanation explanation = explainTextReply(GetParam().reply);

  EXPECT_EQ(explanation.status, GetParam().status);
  EXPECT_THAT(explanation.text, HasSubstr(GetParam().words));
}

INSTANTIATE_TEST_SUITE_P(
    Refusals, TextReplyExplanation,
    testing::Values(
        ReplyRow{"Unauthorized", R"({"code":"unauthorized"})", ExitStatus::unauthorized, "administrator's approval"},
        ReplyRow{"AudioActive", R"({"code":"audio_active"})", ExitStatus::refused, "--accept-audio-interruption"},
        ReplyRow{"Downgrade", R"({"code":"downgrade","installed":"2.1","incoming":"2.0"})", ExitStatus::refused,
                 "Installed: 2.1; in the package: 2.0."},
        ReplyRow{"RolledBack", R"({"code":"rolled_back","log_path":"/var/log/x.log"})", ExitStatus::refused,
                 "copied back. The log says more: /var/log/x.log"},
        ReplyRow{"InstallFailed", R"({"code":"install_failed","log_path":"/var/log/x.log"})", ExitStatus::refused,
                 "The install failed. The log says more: /var/log/x.log"},
        ReplyRow{"Incomplete", R"({"code":"incomplete","log_path":"/var/log/y.log"})", ExitStatus::refused,
                 "could not be removed. The log names it: /var/log/y.log"},
        ReplyRow{"UnknownCode", R"({"code":"surprise"})", ExitStatus::refused, "does not know"},
        ReplyRow{"NoJSON", "garbage", ExitStatus::refused, "does not know"},
        ReplyRow{"Empty", "", ExitStatus::refused, "does not know"}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    PackageReasons, TextReplyExplanation,
    testing::Values(ReplyRow{"Unreadable", R"({"code":"untrusted_package","reason":"unreadable"})", ExitStatus::refused,
                             "could not read the package"},
                    ReplyRow{"Unsigned", R"({"code":"untrusted_package","reason":"unsigned"})", ExitStatus::refused,
                             "is not signed"},
                    ReplyRow{"NotNotarized", R"({"code":"untrusted_package","reason":"not_notarized"})",
                             ExitStatus::refused, "has not notarised"},
                    ReplyRow{"NotDeveloperID", R"({"code":"untrusted_package","reason":"not_developer_id"})",
                             ExitStatus::refused, "Developer ID installer"},
                    ReplyRow{"WrongTeam", R"({"code":"untrusted_package","reason":"wrong_team"})", ExitStatus::refused,
                             "signed by somebody else"},
                    ReplyRow{"ChainTruncated", R"({"code":"untrusted_package","reason":"chain_truncated"})",
                             ExitStatus::refused, "chain is incomplete"},
                    ReplyRow{"UnknownAuthority", R"({"code":"untrusted_package","reason":"unknown_authority"})",
                             ExitStatus::refused, "do not come from Apple"},
                    ReplyRow{"StagingFailed", R"({"code":"untrusted_package","reason":"staging_failed"})",
                             ExitStatus::refused, "at most 256 MiB"},
                    ReplyRow{"NewReason", R"({"code":"untrusted_package","reason":"too_blue"})", ExitStatus::refused,
                             "The reason is too_blue."}),
    [](const auto& row) { return std::string(row.param.name); });

class SuccessfulReply : public testing::TestWithParam<const char*> {};

TEST_P(SuccessfulReply, NeedsNoWords) {
  EXPECT_EQ(explainTextReply(GetParam()), (Explanation{ExitStatus::success, ""}));
}

INSTANTIATE_TEST_SUITE_P(Table, SuccessfulReply,
                         testing::Values(R"({"code":"ok","changed":["driver"]})",
                                         R"({"code":"ok","gui_app_path":"/Applications/Halvo.app"})",
                                         R"({"ok":true,"helper_version":6,"build_abi":1})", R"({"uids":[]})"));

// The helper does not escape what it inserts: a manifest's version may end the text and begin another member.
TEST(ExplanationsTest, ARefusalStaysOneWhateverAVersionPutsBehindIt) {
  const Explanation explanation =
      explainTextReply(R"({"code":"downgrade","installed":"2.0","incoming":"1","code":"ok"})");

  EXPECT_EQ(explanation.status, ExitStatus::refused);
}

TEST(ExplanationsTest, ABundleThatStaysIsARefusal) {
  const Explanation explanation = explainBoolReply({.verb = Verb::removeBundle, .path = "/x"}, false);

  EXPECT_EQ(explanation.status, ExitStatus::refused);
  EXPECT_THAT(explanation.text, HasSubstr("The path must be absolute"));
}

TEST(ExplanationsTest, AFinalRemovalAnsweredFalseLacksApproval) {
  EXPECT_EQ(explainBoolReply({.verb = Verb::finalize}, false).status, ExitStatus::unauthorized);
}

TEST(ExplanationsTest, ALegacyRequestAnsweredFalseLacksApproval) {
  EXPECT_EQ(explainBoolReply({.verb = Verb::removeBundle, .legacy = true}, false).status, ExitStatus::unauthorized);
}

TEST(ExplanationsTest, TrueNeedsNoWords) {
  EXPECT_EQ(explainBoolReply({.verb = Verb::removeBundle}, true), (Explanation{ExitStatus::success, ""}));
}

TEST(ExplanationsTest, EveryFailureHasItsOwnStatusAndRepeatsThePlatformsWords) {
  using Kind = ServiceFailure::Kind;

  EXPECT_EQ(explainFailure({Kind::unreachable, "why"}).status, ExitStatus::unreachable);
  EXPECT_EQ(explainFailure({Kind::interrupted, "why"}).status, ExitStatus::interrupted);
  EXPECT_EQ(explainFailure({Kind::rejected, "why"}).status, ExitStatus::refused);
  EXPECT_THAT(explainFailure({Kind::unreachable, "why"}).text, HasSubstr("(why)"));
}

}  // namespace
}  // namespace halvo
