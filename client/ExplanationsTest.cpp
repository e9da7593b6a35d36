#include "client/Explanations.h"

#include <gtest/gtest.h>

namespace halvo {
namespace {

const CommandLine kInstall{.verb = Verb::install, .path = "a.pkg", .manifestPath = "m.json"};
const CommandLine kRemoveBundle{.verb = Verb::removeBundle, .path = "/Applications/Halvo.app"};

struct ReplyRow {
  const char* name;
  const char* reply;
  const char* text;
};

std::string nameOf(const testing::TestParamInfo<ReplyRow>& row) { return row.param.name; }

class RefusalExplanation : public testing::TestWithParam<ReplyRow> {};

TEST_P(RefusalExplanation, SaysWhatHappenedAndWhatToDo) {
  EXPECT_EQ(explainTextReply(kInstall, GetParam().reply), (Explanation{ExitStatus::refused, GetParam().text}));
}

INSTANTIATE_TEST_SUITE_P(
    Codes, RefusalExplanation,
    testing::Values(
        ReplyRow{"AudioActive", R"({"code":"audio_active"})",
                 "Audio is running and would be interrupted. Stop it, or try again with --accept-audio-interruption. "
                 "Nothing was changed."},
        ReplyRow{"Downgrade", R"({"code":"downgrade","installed":"2.1","incoming":"2.0"})",
                 "The manifest names an older driver than the installed one. Nothing was changed. "
                 "Installed: 2.1; in the manifest: 2.0."},
        ReplyRow{"DowngradeToZero", R"({"code":"downgrade","installed":"2.1","incoming":"0"})",
                 "The manifest names an older driver than the installed one. Nothing was changed. "
                 "Installed: 2.1; in the manifest: 0."},
        ReplyRow{"RolledBack", R"({"code":"rolled_back","log_path":"/var/log/x.log"})",
                 "The installer failed, and what had been saved of the previous installation was copied back. "
                 "/var/log/install.log says why it failed. The helper's log: /var/log/x.log"},
        ReplyRow{"InstallFailed", R"({"code":"install_failed","log_path":"/var/log/x.log"})",
                 "The install failed. /var/log/install.log says why. The helper's log: /var/log/x.log"},
        ReplyRow{"Incomplete", R"({"code":"incomplete","log_path":"/var/log/y.log"})",
                 "Something could not be removed. Try again, or remove by hand what the log names: /var/log/y.log"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    PackageReasons, RefusalExplanation,
    testing::Values(
        ReplyRow{"Unreadable", R"({"code":"untrusted_package","reason":"unreadable"})",
                 "The package was refused and nothing was changed. The system could not read the package. Download it "
                 "again."},
        ReplyRow{"Unsigned", R"({"code":"untrusted_package","reason":"unsigned"})",
                 "The package was refused and nothing was changed. The package is not signed. Use a package from the "
                 "maker."},
        ReplyRow{"NotNotarized", R"({"code":"untrusted_package","reason":"not_notarized"})",
                 "The package was refused and nothing was changed. Apple has not notarised the package. Use a released "
                 "package."},
        ReplyRow{"NotDeveloperID", R"({"code":"untrusted_package","reason":"not_developer_id"})",
                 "The package was refused and nothing was changed. The package is not signed as a Developer ID "
                 "installer. Use a released package."},
        ReplyRow{"WrongTeam", R"({"code":"untrusted_package","reason":"wrong_team"})",
                 "The package was refused and nothing was changed. The package is signed by somebody else. Use a "
                 "package from the maker."},
        ReplyRow{"ChainTruncated", R"({"code":"untrusted_package","reason":"chain_truncated"})",
                 "The package was refused and nothing was changed. The package's certificate chain is incomplete. Use "
                 "a released package."},
        ReplyRow{"UnknownAuthority", R"({"code":"untrusted_package","reason":"unknown_authority"})",
                 "The package was refused and nothing was changed. The package's certificates do not come from Apple. "
                 "Use a package from the maker."},
        ReplyRow{
            "StagingFailed", R"({"code":"untrusted_package","reason":"staging_failed"})",
            "The package was refused and nothing was changed. The helper could not take the package in: it must be a "
            "regular file, no link, of at most 256 MiB, in a folder that the helper may read, and the disk must "
            "have room for a copy. Put it into another folder than Downloads, Desktop or Documents and try again."},
        ReplyRow{"NewReason", R"({"code":"untrusted_package","reason":"too_blue"})",
                 "The package was refused and nothing was changed. The reason is too_blue."}),
    nameOf);

// The helper inserts versions as they are: a manifest's may end the text, begin another member, or hold anything.
INSTANTIATE_TEST_SUITE_P(
    StrangeMembers, RefusalExplanation,
    testing::Values(ReplyRow{"NoJSON", R"({"code":"downgrade","installed":"2.1","incoming":"1"2"})",
                             "The manifest names an older driver than the installed one. Nothing was changed. "
                             "Installed: ?; in the manifest: ?."},
                    ReplyRow{"Missing", R"({"code":"incomplete"})",
                             "Something could not be removed. Try again, or remove by hand what the log names: ?"},
                    ReplyRow{"NoText", R"({"code":"incomplete","log_path":7})",
                             "Something could not be removed. Try again, or remove by hand what the log names: ?"},
                    ReplyRow{
                        "ControlCharacters", R"({"code":"incomplete","log_path":"\u001b[2J"})",
                        "Something could not be removed. Try again, or remove by hand what the log names: \\033[2J"},
                    ReplyRow{"SecondCode", R"({"code":"downgrade","installed":"2.0","incoming":"1","code":"ok"})",
                             "The manifest names an older driver than the installed one. Nothing was changed. "
                             "Installed: 2.0; in the manifest: 1."}),
    nameOf);

class UnknownReply : public testing::TestWithParam<ReplyRow> {};

TEST_P(UnknownReply, PointsToTheLogs) {
  EXPECT_EQ(explainTextReply(kInstall, GetParam().reply),
            (Explanation{ExitStatus::refused,
                         "The helper answered something that this program does not know. What it did, its logs say: "
                         "/var/log/halvo-install.log and /var/log/halvo-uninstall.log. Update the application."}));
}

INSTANTIATE_TEST_SUITE_P(Table, UnknownReply,
                         testing::Values(ReplyRow{"NewCode", R"({"code":"surprise"})", ""},
                                         ReplyRow{"EmptyCode", R"({"code":""})", ""},
                                         ReplyRow{"CodeNotFirst", R"({"x":1,"code":"ok"})", ""},
                                         ReplyRow{"CodeWithBlank", R"({"code": "ok"})", ""},
                                         ReplyRow{"NoJSON", "garbage", ""}, ReplyRow{"Empty", "", ""}),
                         nameOf);

class SuccessfulReply : public testing::TestWithParam<ReplyRow> {};

TEST_P(SuccessfulReply, NeedsNoWords) {
  EXPECT_EQ(explainTextReply(kInstall, GetParam().reply), (Explanation{ExitStatus::success, ""}));
}

INSTANTIATE_TEST_SUITE_P(Table, SuccessfulReply,
                         testing::Values(ReplyRow{"Install", R"({"code":"ok","changed":["driver"]})", ""},
                                         ReplyRow{"Removal",
                                                  R"({"code":"ok","gui_app_path":"/Applications/Halvo.app"})", ""},
                                         ReplyRow{"Ping", R"({"ok":true,"helper_version":6,"build_abi":1})", ""},
                                         ReplyRow{"Users", R"({"uids":[]})", ""}),
                         nameOf);

struct UnauthorizedRow {
  const char* name;
  CommandLine command;
  const char* text;
};

class UnauthorizedExplanation : public testing::TestWithParam<UnauthorizedRow> {};

TEST_P(UnauthorizedExplanation, SaysHowToGetAnApprovalThere) {
  const Explanation expected{ExitStatus::unauthorized, GetParam().text};

  EXPECT_EQ(explainTextReply(GetParam().command, R"({"code":"unauthorized"})"), expected);
  EXPECT_EQ(explainNoReply(GetParam().command), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Table, UnauthorizedExplanation,
    testing::Values(
        UnauthorizedRow{"WithAGrant", kInstall,
                        "The helper did not find an administrator's approval and did nothing. An approval is good for "
                        "five minutes: try again. If that does not help, look for the helper's line \"admin right\" in "
                        "the system log: with sound=0 it refuses every change."},
        UnauthorizedRow{"WithoutAGrant",
                        {.verb = Verb::prepareRemoval, .withoutGrant = true},
                        "Nobody approved the authorization that was sent, so the helper did nothing. Make the request "
                        "without --without-grant."},
        UnauthorizedRow{"Legacy",
                        {.verb = Verb::finalize, .legacy = true},
                        "A legacy request carries no approval, and the helper never acts on one. Make it without "
                        "\"legacy\"."}),
    [](const auto& row) { return std::string(row.param.name); });

struct CauseRow {
  const char* name;
  Seen seen;
  const char* reply;
  const char* text;
};

class CloserCause : public testing::TestWithParam<CauseRow> {};

TEST_P(CloserCause, IsWhatThisProgramSawItself) {
  EXPECT_EQ(explainTextReply(kInstall, GetParam().reply, GetParam().seen),
            (Explanation{ExitStatus::refused, GetParam().text}));
}

INSTANTIATE_TEST_SUITE_P(
    Table, CloserCause,
    testing::Values(
        CauseRow{"ManifestWithoutAVersion",
                 {.manifestNamesVersion = false},
                 R"({"code":"downgrade","installed":"2.1","incoming":"0"})",
                 "The manifest names no \"driver_version\", and version 2.1 is installed. Nothing was changed. Use the "
                 "manifest that came with the package."},
        CauseRow{
            "NothingToCopyBack",
            {.productWasInstalled = false},
            R"({"code":"rolled_back","log_path":"/x.log"})",
            "The installer failed. Nothing of the product had been installed, so nothing was copied back; what the "
            "installer left, \"halvo-app prepare-removal\" removes. /var/log/install.log says why it failed. The "
            "helper's log: /x.log"},
        CauseRow{"StagingLeft",
                 {.stagingWasLeft = true},
                 R"({"code":"untrusted_package","reason":"staging_failed"})",
                 "An install that was broken off had left its copy of a package behind, which this attempt removed. "
                 "Nothing else was changed. Try again."},
        CauseRow{"FullDisk",
                 {.stagingWasLeft = true, .diskIsFull = true},
                 R"({"code":"untrusted_package","reason":"staging_failed"})",
                 "The disk is full: it has no room for a copy of the package. Nothing was changed. Make room and try "
                 "again."}),
    [](const auto& row) { return std::string(row.param.name); });

// What was seen explains no refusal that has a cause of its own.
INSTANTIATE_TEST_SUITE_P(
    OtherRefusals, CloserCause,
    testing::Values(CauseRow{
        "WrongTeam",
        {.manifestNamesVersion = false, .productWasInstalled = false, .stagingWasLeft = true, .diskIsFull = true},
        R"({"code":"untrusted_package","reason":"wrong_team"})",
        "The package was refused and nothing was changed. The package is signed by somebody else. "
        "Use a package from the maker."}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ExplanationsTest, OnAFullDiskAnApprovalThatIsNotFoundIsTheDisksFault) {
  const Explanation expected{
      ExitStatus::unauthorized,
      "The disk is full, and the system needs room to check an approval: the helper did nothing. "
      "Make room and try again."};

  EXPECT_EQ(explainTextReply(kInstall, R"({"code":"unauthorized"})", {.diskIsFull = true}), expected);
  EXPECT_EQ(explainBoolReply(kRemoveBundle, false, {.diskIsFull = true}), expected);
}

TEST(ExplanationsTest, ABundleThatStaysIsLockedOrTheApprovalTooOld) {
  EXPECT_EQ(explainBoolReply(kRemoveBundle, false),
            (Explanation{ExitStatus::refused,
                         "The helper did not remove it, or not all of it: something in the folder is locked, which "
                         "\"ls -lOR\" shows, or more than five minutes had passed since the approval when the turn of "
                         "this request came. Unlock what is locked and try again."}));
}

TEST(ExplanationsTest, ABundleWhoseFaultIsSeenStaysForThat) {
  EXPECT_EQ(
      explainBoolReply(kRemoveBundle, false, {.faultOfBundle = "The path /x leads to nothing: check it."}),
      (Explanation{ExitStatus::refused, "The helper did not remove it. The path /x leads to nothing: check it."}));
}

TEST(ExplanationsTest, ABundleRemovalThatNobodyApprovedLacksApproval) {
  const CommandLine command{.verb = Verb::removeBundle, .withoutGrant = true, .path = "/x"};

  EXPECT_EQ(explainBoolReply(command, false, {.faultOfBundle = "wrong"}),
            explainTextReply(command, R"({"code":"unauthorized"})"));
}

TEST(ExplanationsTest, AFinalRemovalAnsweredFalseLacksApproval) {
  EXPECT_EQ(explainBoolReply({.verb = Verb::finalize}, false),
            (Explanation{ExitStatus::unauthorized,
                         "The helper did not find an administrator's approval and did nothing. An approval is good for "
                         "five minutes: try again. If that does not help, look for the helper's line \"admin right\" "
                         "in the system log: with sound=0 it refuses every change."}));
  EXPECT_EQ(explainBoolReply({.verb = Verb::finalize, .withoutGrant = true}, false),
            (Explanation{ExitStatus::unauthorized,
                         "Nobody approved the authorization that was sent, so the helper did nothing. Make the request "
                         "without --without-grant."}));
}

TEST(ExplanationsTest, ALegacyRequestAnsweredFalseLacksApproval) {
  const CommandLine legacy{.verb = Verb::removeBundle, .legacy = true, .path = "/x"};

  EXPECT_EQ(explainBoolReply(legacy, false), explainTextReply(legacy, R"({"code":"unauthorized"})"));
}

TEST(ExplanationsTest, TrueNeedsNoWords) {
  EXPECT_EQ(explainBoolReply(kRemoveBundle, true), (Explanation{ExitStatus::success, ""}));
}

struct FailureRow {
  const char* name;
  ServiceFailure failure;
  Explanation expected;
};

class FailureExplanation : public testing::TestWithParam<FailureRow> {};

TEST_P(FailureExplanation, RepeatsThePlatformsWordsAndSaysWhatToDo) {
  EXPECT_EQ(explainFailure({.verb = Verb::ping}, GetParam().failure), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Table, FailureExplanation,
    testing::Values(
        FailureRow{"Unreachable",
                   {ServiceFailure::Kind::unreachable, "why"},
                   {ExitStatus::unreachable,
                    "The helper cannot be reached, does not take this program for the application, or ended before it "
                    "replied. Open the Halvo application, which registers its helper, allow the helper in System "
                    "Settings, Login Items, "
                    "and try again."}},
        FailureRow{"Interrupted",
                   {ServiceFailure::Kind::interrupted, "why"},
                   {ExitStatus::interrupted, "The helper ended before it replied. (why) Try again."}},
        FailureRow{"Rejected",
                   {ServiceFailure::Kind::rejected, "w\x1Bhy"},
                   {ExitStatus::refused,
                    "The helper could not take the request. (w\\033hy) Application and helper may be of different "
                    "versions: update both."}}),
    [](const auto& row) { return std::string(row.param.name); });

struct CutOffRow {
  const char* name;
  CommandLine command;
  std::string expected;
};

class CutOffExplanation : public testing::TestWithParam<CutOffRow> {};

TEST_P(CutOffExplanation, SaysThatItIsUnknownWhetherTheChangeBeganAndWhereToLook) {
  const ServiceFailure interrupted{ServiceFailure::Kind::interrupted, "why"};

  EXPECT_EQ(explainFailure(GetParam().command, interrupted),
            (Explanation{ExitStatus::interrupted,
                         "The helper ended before it replied. (why) It is unknown whether the request was begun. " +
                             GetParam().expected}));
}

INSTANTIATE_TEST_SUITE_P(
    Table, CutOffExplanation,
    testing::Values(
        CutOffRow{"Install",
                  {.verb = Verb::install},
                  "The last lines of /var/log/halvo-install.log say how far it came. Wait until no process called "
                  "installer runs, or restart the Mac, before you install again."},
        CutOffRow{"PrepareRemoval",
                  {.verb = Verb::prepareRemoval},
                  "The last lines of /var/log/halvo-uninstall.log say how far it came. What is gone may be removed "
                  "again: make the request once more."},
        CutOffRow{"RemoveBundle",
                  {.verb = Verb::removeBundle},
                  "Look whether the folder is still there, and make the request once more if it is."},
        CutOffRow{"Finalize",
                  {.verb = Verb::finalize},
                  "Where \"halvo-app ping\" is still answered, make the request once more."},
        CutOffRow{"Legacy",
                  {.verb = Verb::finalize, .legacy = true},
                  "Where \"halvo-app ping\" is still answered, make the request once more."}),
    [](const auto& row) { return std::string(row.param.name); });

class TimeOutExplanation : public testing::TestWithParam<CutOffRow> {};

TEST_P(TimeOutExplanation, SaysHowLongItWasWaitedForAndWhereToLook) {
  CommandLine command = GetParam().command;
  command.timeout = std::chrono::seconds(30);

  EXPECT_EQ(explainTimeOut(command),
            (Explanation{ExitStatus::noReplyInTime,
                         "The helper did not reply within the 30 s that --timeout gives it. " + GetParam().expected}));
}

INSTANTIATE_TEST_SUITE_P(
    Table, TimeOutExplanation,
    testing::Values(
        CutOffRow{"Ping", {.verb = Verb::ping}, "Try again, or wait longer."},
        CutOffRow{"Users", {.verb = Verb::users}, "Try again, or wait longer."},
        CutOffRow{"Install",
                  {.verb = Verb::install},
                  "What it has begun, it finishes: the last lines of /var/log/halvo-install.log say how far it is."},
        CutOffRow{"PrepareRemoval",
                  {.verb = Verb::prepareRemoval},
                  "What it has begun, it finishes: the last lines of /var/log/halvo-uninstall.log say how far it is."},
        CutOffRow{"RemoveBundle",
                  {.verb = Verb::removeBundle},
                  "What it has begun, it finishes: look whether the folder is still there."},
        CutOffRow{"Finalize",
                  {.verb = Verb::finalize},
                  "What it has begun, it finishes: look whether \"halvo-app ping\" is still answered."}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ExplanationsTest, AHelperThatIsTooOldIsReplacedByTheApplication) {
  EXPECT_EQ(explainOldHelper(),
            (Explanation{ExitStatus::helperTooOld,
                         "The installed helper is too old for this request. Open the new application, which registers "
                         "its own helper, and try again."}));
}

struct ApprovalRow {
  const char* name;
  std::int32_t status;
  const char* text;
};

class MissingApprovalExplanation : public testing::TestWithParam<ApprovalRow> {};

TEST_P(MissingApprovalExplanation, SaysWhatHinderedIt) {
  EXPECT_EQ(explainMissingApproval(GetParam().status), (Explanation{ExitStatus::unauthorized, GetParam().text}));
}

INSTANTIATE_TEST_SUITE_P(
    Table, MissingApprovalExplanation,
    testing::Values(
        ApprovalRow{"Cancelled", -60006,
                    "The question for an administrator's approval was cancelled (status -60006). Nothing was changed. "
                    "Try again and approve when the system asks."},
        ApprovalRow{"Denied", -60005,
                    "An administrator has to approve this, and none did (status -60005). Nothing was changed. Try "
                    "again with the name and password of an administrator."},
        ApprovalRow{"NoScreen", -60007,
                    "An administrator has to approve this, and the system cannot ask for it in this session (status "
                    "-60007). Nothing was changed. Try again in a window of a user who is logged in at the screen."},
        ApprovalRow{"NoService", -60008,
                    "The system's authorization service could not be used (status -60008). Nothing was changed. Try "
                    "again; if that does not help, restart the Mac."}),
    [](const auto& row) { return std::string(row.param.name); });

class ApprovalOnAFullDisk : public testing::TestWithParam<ApprovalRow> {};

TEST_P(ApprovalOnAFullDisk, IsMissingForThatUnlessAPersonCancelled) {
  EXPECT_EQ(explainMissingApproval(GetParam().status, {.diskIsFull = true}),
            (Explanation{ExitStatus::unauthorized, GetParam().text}));
}

INSTANTIATE_TEST_SUITE_P(
    Table, ApprovalOnAFullDisk,
    testing::Values(ApprovalRow{"Denied", -60005,
                                "The disk is full, and the system needs room to ask for an administrator's approval "
                                "(status -60005). Nothing was changed. Make room and try again."},
                    ApprovalRow{"Cancelled", -60006,
                                "The question for an administrator's approval was cancelled (status -60006). Nothing "
                                "was changed. Try again and approve when the system asks."}),
    [](const auto& row) { return std::string(row.param.name); });

struct LogRow {
  const char* name;
  Verb verb;
  const char* log;
  const char* notice;
};

class WaitingNotice : public testing::TestWithParam<LogRow> {};

TEST_P(WaitingNotice, NamesTheLogThatFollows) {
  EXPECT_EQ(progressLogOf({.verb = GetParam().verb}), GetParam().log);
  EXPECT_EQ(waitingNotice({.verb = GetParam().verb}), GetParam().notice);
}

INSTANTIATE_TEST_SUITE_P(
    Table, WaitingNotice,
    testing::Values(
        LogRow{
            "Install", Verb::install, "/var/log/halvo-install.log",
            "Waiting for the helper; interrupting this does not stop it. It makes one change at a time, and does not "
            "tell whether another one comes first. New lines of /var/log/halvo-install.log:"},
        LogRow{
            "PrepareRemoval", Verb::prepareRemoval, "/var/log/halvo-uninstall.log",
            "Waiting for the helper; interrupting this does not stop it. It makes one change at a time, and does not "
            "tell whether another one comes first. New lines of /var/log/halvo-uninstall.log:"},
        LogRow{
            "RemoveBundle", Verb::removeBundle, "",
            "Waiting for the helper; interrupting this does not stop it. It makes one change at a time, and does not "
            "tell whether another one comes first."},
        LogRow{
            "Finalize", Verb::finalize, "",
            "Waiting for the helper; interrupting this does not stop it. It makes one change at a time, and does not "
            "tell whether another one comes first."},
        LogRow{
            "Ping", Verb::ping, "",
            "Waiting for the helper; interrupting this does not stop it. It makes one change at a time, and does not "
            "tell whether another one comes first."},
        LogRow{
            "Users", Verb::users, "",
            "Waiting for the helper; interrupting this does not stop it. It makes one change at a time, and does not "
            "tell whether another one comes first."}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace halvo
