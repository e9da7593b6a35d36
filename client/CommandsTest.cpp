#include "client/Commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "client/testing/ScriptedHelper.h"
#include "sim/frameworks/testing/FrameworkProbe.h"
#include "sim/support/MachinePaths.h"

namespace halvo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using Requests = std::vector<std::string>;

class CommandsTest : public testing::Test {
 protected:
  CommandsTest() { sim::setStateRoot(state.path()); }
  ~CommandsTest() override { sim::setStateRoot("/sim"); }

  ExitStatus run(const CommandLine& command) {
    Conversation conversation([this] { return std::make_unique<ScriptedClient>(helper); });
    return runCommand(command, conversation, {out, err});
  }

  void letTheAdministrator(const std::string& answer) { state.makeFile("authorization-answer", answer); }

  // The right as the helper registers it, so that a grant can be obtained.
  void knowTheRight() {
    state.makeFile("authorization-db/com.halvo.helper.manage-system.json",
                   R"({"class":"user","group":"admin","timeout":300,"shared":false})");
  }

  TemporaryDirectory state;
  const std::string manifest = state.makeFile("m.json", "{}");
  std::shared_ptr<ScriptedHelper> helper = std::make_shared<ScriptedHelper>();
  std::ostringstream out;
  std::ostringstream err;
};

struct RequestRow {
  const char* name;
  CommandLine command;
  Requests requests;
};

class RequestOfCommand : public CommandsTest, public testing::WithParamInterface<RequestRow> {};

TEST_P(RequestOfCommand, IsMadeOnce) {
  CommandLine command = GetParam().command;
  command.manifestPath = manifest;
  command.withoutChecks = true;

  run(command);

  EXPECT_EQ(helper->requests, GetParam().requests);
}

INSTANTIATE_TEST_SUITE_P(Plain, RequestOfCommand,
                         testing::Values(RequestRow{"Ping", {.verb = Verb::ping}, {"ping"}},
                                         RequestRow{"Users", {.verb = Verb::users}, {"users"}}),
                         [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Authorized, RequestOfCommand,
    testing::Values(
        RequestRow{"Install",
                   {.verb = Verb::install, .withoutGrant = true, .path = "/a.pkg"},
                   {"ping", "install 32 bytes /a.pkg {} false"}},
        RequestRow{"InstallWithAudio",
                   {.verb = Verb::install, .withoutGrant = true, .acceptAudioInterruption = true, .path = "/a.pkg"},
                   {"ping", "install 32 bytes /a.pkg {} true"}},
        RequestRow{"PrepareRemoval",
                   {.verb = Verb::prepareRemoval, .withoutGrant = true},
                   {"ping", "prepareForRemoval 32 bytes false"}},
        RequestRow{"PrepareRemovalWithAudio",
                   {.verb = Verb::prepareRemoval, .withoutGrant = true, .acceptAudioInterruption = true},
                   {"ping", "prepareForRemoval 32 bytes true"}},
        RequestRow{"RemoveBundle",
                   {.verb = Verb::removeBundle, .withoutGrant = true, .path = "relative/Halvo.app"},
                   {"ping", "removeAppBundle 32 bytes relative/Halvo.app"}},
        RequestRow{"Finalize", {.verb = Verb::finalize, .withoutGrant = true}, {"ping", "finalizeRemoval 32 bytes"}},
        RequestRow{
            "Uninstall",
            {.verb = Verb::uninstall, .withoutGrant = true, .acceptAudioInterruption = true, .path = "/Halvo.app"},
            {"ping", "prepareForRemoval 32 bytes true", "removeAppBundle 32 bytes /Halvo.app",
             "finalizeRemoval 32 bytes"}}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Legacy, RequestOfCommand,
    testing::Values(
        RequestRow{
            "Install", {.verb = Verb::install, .legacy = true, .path = "/a.pkg"}, {"legacy install /a.pkg {} false"}},
        RequestRow{"InstallWithAudio",
                   {.verb = Verb::install, .legacy = true, .acceptAudioInterruption = true, .path = "/a.pkg"},
                   {"legacy install /a.pkg {} true"}},
        RequestRow{
            "PrepareRemoval", {.verb = Verb::prepareRemoval, .legacy = true}, {"legacy prepareForRemoval false"}},
        RequestRow{"PrepareRemovalWithAudio",
                   {.verb = Verb::prepareRemoval, .legacy = true, .acceptAudioInterruption = true},
                   {"legacy prepareForRemoval true"}},
        RequestRow{"RemoveBundle",
                   {.verb = Verb::removeBundle, .legacy = true, .path = "relative/Halvo.app"},
                   {"legacy removeAppBundle relative/Halvo.app"}},
        // The ping behind it shows that it arrived.
        RequestRow{"Finalize", {.verb = Verb::finalize, .legacy = true}, {"legacy finalizeRemoval", "ping"}}),
    [](const auto& row) { return std::string(row.param.name); });

struct ReplyRow {
  const char* name;
  CommandLine command;
  const char* textReply;
  bool boolReply;
  ExitStatus status;
  const char* out;
  const char* err;
};

class ReplyToCommand : public CommandsTest, public testing::WithParamInterface<ReplyRow> {};

TEST_P(ReplyToCommand, IsPrintedAsItCameAndExplained) {
  helper->textReply = GetParam().textReply;
  helper->boolReply = GetParam().boolReply;

  EXPECT_EQ(run(GetParam().command), GetParam().status);

  EXPECT_EQ(out.str(), GetParam().out);
  EXPECT_EQ(err.str(), GetParam().err);
}

INSTANTIATE_TEST_SUITE_P(
    Table, ReplyToCommand,
    testing::Values(
        ReplyRow{"Ping",
                 {.verb = Verb::ping},
                 "",
                 false,
                 ExitStatus::success,
                 "{\"ok\":true,\"helper_version\":6,\"build_abi\":1}\n",
                 ""},
        ReplyRow{
            "Users", {.verb = Verb::users}, R"({"uids":[501]})", false, ExitStatus::success, "{\"uids\":[501]}\n", ""},
        ReplyRow{"Done",
                 {.verb = Verb::prepareRemoval, .withoutGrant = true},
                 R"({"code":"ok","gui_app_path":"/Applications/Halvo.app"})",
                 false,
                 ExitStatus::success,
                 "{\"code\":\"ok\",\"gui_app_path\":\"/Applications/Halvo.app\"}\n",
                 ""},
        ReplyRow{"Refused",
                 {.verb = Verb::prepareRemoval, .withoutGrant = true},
                 R"({"code":"audio_active"})",
                 false,
                 ExitStatus::refused,
                 "{\"code\":\"audio_active\"}\n",
                 "halvo-app: Audio is running and would be interrupted. Stop it, or try again with "
                 "--accept-audio-interruption. Nothing was changed.\n"},
        ReplyRow{"Unauthorized",
                 {.verb = Verb::prepareRemoval, .withoutGrant = true},
                 R"({"code":"unauthorized"})",
                 false,
                 ExitStatus::unauthorized,
                 "{\"code\":\"unauthorized\"}\n",
                 "halvo-app: Nobody approved the authorization that was sent, so the helper did nothing. Make the "
                 "request without --without-grant.\n"},
        ReplyRow{"True", {.verb = Verb::finalize, .withoutGrant = true}, "", true, ExitStatus::success, "true\n", ""},
        ReplyRow{"False",
                 {.verb = Verb::finalize, .withoutGrant = true},
                 "",
                 false,
                 ExitStatus::unauthorized,
                 "false\n",
                 "halvo-app: Nobody approved the authorization that was sent, so the helper did nothing. Make the "
                 "request without --without-grant.\n"},
        ReplyRow{"None",
                 {.verb = Verb::finalize, .legacy = true},
                 "",
                 false,
                 ExitStatus::unauthorized,
                 "",
                 "halvo-app: A legacy request carries no approval, and the helper never acts on one. Make it without "
                 "\"legacy\".\n"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(CommandsTest, ARelativePackageIsMadeAbsolute) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(state.path());
  run({.verb = Verb::install,
       .withoutGrant = true,
       .withoutChecks = true,
       .path = "below/a.pkg",
       .manifestPath = manifest});
  std::filesystem::current_path(before);

  EXPECT_THAT(helper->requests, ElementsAre("ping", "install 32 bytes " + state.path("below/a.pkg") + " {} false"));
}

TEST_F(CommandsTest, InAFolderThatIsGoneARelativePackageStaysAsItWasTyped) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(state.makeDirectory("gone"));
  std::filesystem::remove(state.path("gone"));
  run({.verb = Verb::install, .withoutGrant = true, .withoutChecks = true, .path = "a.pkg", .manifestPath = manifest});
  std::filesystem::current_path(before);

  EXPECT_THAT(helper->requests, ElementsAre("ping", "install 32 bytes a.pkg {} false"));
}

TEST_F(CommandsTest, AManifestThatCannotBeReadEndsItBeforeAnythingElse) {
  EXPECT_EQ(run({.verb = Verb::install, .path = "/tmp/a.pkg", .manifestPath = "/nowhere/m.json"}),
            ExitStatus::unusableInput);

  EXPECT_THAT(helper->requests, IsEmpty());
  EXPECT_EQ(err.str(),
            "halvo-app: The manifest /nowhere/m.json cannot be read. No such file or directory: check the path.\n");
}

TEST_F(CommandsTest, AHelperOfAnOlderVersionIsNotAskedForAChange) {
  helper->pingReply = R"({"ok":true,"helper_version":5,"build_abi":1})";

  EXPECT_EQ(run({.verb = Verb::finalize}), ExitStatus::helperTooOld);

  EXPECT_THAT(helper->requests, ElementsAre("ping"));
  EXPECT_EQ(err.str(),
            "halvo-app: The installed helper is too old for this request. Open the new application, which registers "
            "its own helper, and try again.\n");
}

TEST_F(CommandsTest, AHelperThatDoesNotAnswerAPingIsNotAskedForAChange) {
  helper->pingFailure = {ServiceFailure::Kind::unreachable, "nobody there"};

  EXPECT_EQ(run({.verb = Verb::finalize}), ExitStatus::unreachable);

  EXPECT_THAT(helper->requests, ElementsAre("ping", "ping"));
  EXPECT_THAT(err.str(), testing::StartsWith("halvo-app: The helper cannot be reached, "));
}

class ChangeThatIsCutOff : public CommandsTest, public testing::WithParamInterface<ServiceFailure::Kind> {};

// Its ping was answered: the helper does take this program for the application.
TEST_P(ChangeThatIsCutOff, IsMadeOnceAndSaidToBeUnknown) {
  helper->requestFailure = {GetParam(), "gone"};

  EXPECT_EQ(run({.verb = Verb::finalize, .withoutGrant = true}), ExitStatus::interrupted);

  EXPECT_THAT(helper->requests, ElementsAre("ping", "finalizeRemoval 32 bytes"));
  EXPECT_EQ(out.str(), "");
  EXPECT_THAT(err.str(), testing::StartsWith("halvo-app: The helper ended before it replied. (gone) It is unknown "
                                             "whether the request was begun. "));
}

INSTANTIATE_TEST_SUITE_P(Table, ChangeThatIsCutOff,
                         testing::Values(ServiceFailure::Kind::interrupted, ServiceFailure::Kind::unreachable));

TEST_F(CommandsTest, AChangeThatTheHelperCouldNotTakeIsExplainedAsThat) {
  helper->requestFailure = {ServiceFailure::Kind::rejected, "why"};

  EXPECT_EQ(run({.verb = Verb::finalize, .withoutGrant = true}), ExitStatus::refused);

  EXPECT_THAT(err.str(), testing::StartsWith("halvo-app: The helper could not take the request. "));
}

TEST_F(CommandsTest, APingThatTheHelperCouldNotTakeIsExplainedAsThat) {
  helper->pingFailure = {ServiceFailure::Kind::rejected, "why"};

  EXPECT_EQ(run({.verb = Verb::ping}), ExitStatus::refused);

  EXPECT_THAT(err.str(), testing::StartsWith("halvo-app: The helper could not take the request. (why) "));
}

TEST_F(CommandsTest, TheDoctorAsksTheHelperAndNoAdministratorAndReportsToStandardOutput) {
  run({.verb = Verb::doctor});

  EXPECT_THAT(helper->requests, ElementsAre("ping", "users"));
  EXPECT_FALSE(isNamed(state.path("authorization-prompts")));
  EXPECT_THAT(out.str(), testing::StartsWith("Date       "));
  EXPECT_EQ(err.str(), "");
}

TEST_F(CommandsTest, AReplyThatDoesNotComeInTimeIsNotWaitedFor) {
  helper->answersAtOnce = false;

  EXPECT_EQ(run({.verb = Verb::finalize, .withoutGrant = true, .timeout = std::chrono::seconds(1)}),
            ExitStatus::noReplyInTime);

  EXPECT_THAT(helper->requests, ElementsAre("ping", "finalizeRemoval 32 bytes"));
  EXPECT_EQ(out.str(), "");
  EXPECT_EQ(err.str(),
            "halvo-app: The helper did not reply within the 1 s that --timeout gives it. What it has begun, it "
            "finishes: look whether \"halvo-app ping\" is still answered.\n");
}

TEST_F(CommandsTest, AHelperWhosePingIsNotAnsweredInTimeIsNotAskedForAChange) {
  helper->pingsAreAnswered = false;

  EXPECT_EQ(run({.verb = Verb::finalize, .timeout = std::chrono::seconds(1)}), ExitStatus::noReplyInTime);

  EXPECT_THAT(helper->requests, ElementsAre("ping"));
  EXPECT_EQ(err.str(),
            "halvo-app: The helper did not reply within the 1 s that --timeout gives it. Try again, or wait longer.\n");
}

TEST_F(CommandsTest, AListOfUsersThatIsCutOffIsAskedForOnceMore) {
  helper->requestFailure = {ServiceFailure::Kind::interrupted, "gone"};

  EXPECT_EQ(run({.verb = Verb::users}), ExitStatus::unreachable);

  EXPECT_THAT(helper->requests, ElementsAre("users", "users"));
}

class ClientThatMayBeRefused : public CommandsTest, public testing::WithParamInterface<ServiceFailure::Kind> {};

// Which of the two shows depends on whether the connection was closed before or after the message went out.
TEST_P(ClientThatMayBeRefused, IsToldSoInOneWay) {
  helper->pingFailure = {GetParam(), "gone"};

  EXPECT_EQ(run({.verb = Verb::ping}), ExitStatus::unreachable);
  EXPECT_EQ(run({.verb = Verb::finalize}), ExitStatus::unreachable);

  const std::string text =
      "halvo-app: The helper cannot be reached, does not take this program for the application, or ended before it "
      "replied. Open the Halvo application, which registers its helper, allow the helper in System Settings, Login "
      "Items, and try again.\n";
  EXPECT_EQ(err.str(), text + text);
}

INSTANTIATE_TEST_SUITE_P(Table, ClientThatMayBeRefused,
                         testing::Values(ServiceFailure::Kind::interrupted, ServiceFailure::Kind::unreachable));

struct VisibleFaultRow {
  const char* name;
  CommandLine command;
  const char* manifest;
  const char* err;
};

class VisibleFault : public CommandsTest, public testing::WithParamInterface<VisibleFaultRow> {};

TEST_P(VisibleFault, IsRefusedBeforeAnybodyIsAsked) {
  CommandLine command = GetParam().command;
  command.manifestPath = state.makeFile("n.json", GetParam().manifest);

  EXPECT_EQ(run(command), ExitStatus::unusableInput);

  EXPECT_THAT(helper->requests, IsEmpty());
  EXPECT_FALSE(isNamed(state.path("authorization-prompts")));
  EXPECT_EQ(err.str(), GetParam().err);
}

INSTANTIATE_TEST_SUITE_P(
    Table, VisibleFault,
    testing::Values(VisibleFaultRow{"Package",
                                    {.verb = Verb::install, .path = "/nowhere/a.pkg"},
                                    "{}",
                                    "halvo-app: The package /nowhere/a.pkg is not there: check the path.\n"},
                    VisibleFaultRow{"Manifest",
                                    {.verb = Verb::install, .path = "/nowhere/a.pkg"},
                                    "9",
                                    "halvo-app: The manifest is no JSON object: use the one that came with the "
                                    "package.\n"},
                    VisibleFaultRow{"Bundle",
                                    {.verb = Verb::removeBundle, .path = "Halvo.app"},
                                    "",
                                    "halvo-app: The path Halvo.app is not absolute: begin it with a slash.\n"}),
    [](const auto& row) { return std::string(row.param.name); });

class PackageKeptFromTheHelper : public CommandsTest {
 protected:
  ExitStatus install(CommandLine command, bool isKept = true) {
    command.verb = Verb::install;
    command.path = package;
    command.manifestPath = manifest;
    Conversation conversation([this] { return std::make_unique<ScriptedClient>(helper); });
    Surroundings surroundings{.out = out, .err = err};
    surroundings.temporaryFolder = [this] { return temporary; };
    surroundings.isKeptFromHelper = [isKept](const std::string&) { return isKept; };
    return runCommand(command, conversation, surroundings);
  }

  const std::string temporary = state.makeDirectory("T");
  const std::string package = state.makeFile("a.pkg", "xar!");
};

TEST_F(PackageKeptFromTheHelper, ReachesItAsACopyThatIsGoneAfterwards) {
  EXPECT_EQ(install({.withoutGrant = true}), ExitStatus::success);

  EXPECT_THAT(helper->requests,
              ElementsAre("ping", testing::MatchesRegex("install 32 bytes " + temporary +
                                                        "/halvo-app\\.[A-Za-z0-9]{6}/a\\.pkg \\{\\} false")));
  EXPECT_TRUE(std::filesystem::is_empty(temporary));
}

TEST_F(PackageKeptFromTheHelper, IsThereWhileTheHelperIsAsked) {
  bool wasThere = false;
  helper->duringRequest = [&] { wasThere = !std::filesystem::is_empty(temporary); };

  install({.withoutGrant = true});

  EXPECT_TRUE(wasThere);
}

TEST_F(PackageKeptFromTheHelper, LeavesNoCopyWhereNobodyApproves) {
  letTheAdministrator("deny");
  knowTheRight();

  EXPECT_EQ(install({}), ExitStatus::unauthorized);

  EXPECT_TRUE(std::filesystem::is_empty(temporary));
}

TEST_F(PackageKeptFromTheHelper, ThatCannotBeCopiedIsToldBeforeAnybodyIsAsked) {
  std::filesystem::remove(temporary);

  EXPECT_EQ(install({}), ExitStatus::unusableInput);

  EXPECT_THAT(helper->requests, IsEmpty());
  EXPECT_FALSE(isNamed(state.path("authorization-prompts")));
  EXPECT_THAT(err.str(), testing::EndsWith("Put it into another folder, such as /Users/Shared, and try again.\n"));
}

TEST_F(PackageKeptFromTheHelper, IsHandedOverItselfWithoutChecks) {
  install({.withoutGrant = true, .withoutChecks = true});

  EXPECT_THAT(helper->requests, ElementsAre("ping", "install 32 bytes " + package + " {} false"));
}

TEST_F(PackageKeptFromTheHelper, IsHandedOverItselfAsOldApplicationsDo) {
  install({.legacy = true});

  EXPECT_THAT(helper->requests, ElementsAre("legacy install " + package + " {} false"));
}

TEST_F(PackageKeptFromTheHelper, IsNoReasonToCopyAnApplicationThatIsRemoved) {
  state.makeFile("Halvo.app/Contents/MacOS/halvo-app");
  Conversation conversation([this] { return std::make_unique<ScriptedClient>(helper); });
  Surroundings surroundings{.out = out, .err = err};
  surroundings.isKeptFromHelper = [](const std::string&) { return true; };

  runCommand({.verb = Verb::removeBundle, .withoutGrant = true, .path = state.path("Halvo.app")}, conversation,
             surroundings);

  EXPECT_THAT(helper->requests, ElementsAre("ping", "removeAppBundle 32 bytes " + state.path("Halvo.app")));
}

TEST_F(PackageKeptFromTheHelper, OrIsNotKeptGoesAsItIs) {
  install({.withoutGrant = true}, false);

  EXPECT_THAT(helper->requests, ElementsAre("ping", "install 32 bytes " + package + " {} false"));
}

TEST_F(CommandsTest, ALegacyRequestIsSentAsItIs) {
  run({.verb = Verb::removeBundle, .legacy = true, .path = "Halvo.app"});

  EXPECT_THAT(helper->requests, ElementsAre("legacy removeAppBundle Halvo.app"));
}

class InstallOnAMac : public CommandsTest {
 protected:
  ExitStatus install(CommandLine command) {
    command.verb = Verb::install;
    command.path = package;
    command.manifestPath = manifest;
    Conversation conversation([this] { return std::make_unique<ScriptedClient>(helper); });
    return runCommand(command, conversation, {.out = out, .err = err, .view = LocalView(state.path())});
  }

  // A file system that never has room.
  void fillTheDisk() {
    state.makeDirectory("var");
    state.makeLink("var/db", "/proc");
  }

  const std::string package = state.makeFile("a.pkg");
};

TEST_F(InstallOnAMac, WhereAnotherOneWasBrokenOffIsToldSo) {
  state.makeDirectory("var/db/halvo/install-staging");
  helper->textReply = R"({"code":"untrusted_package","reason":"staging_failed"})";

  EXPECT_EQ(install({.withoutGrant = true}), ExitStatus::refused);

  EXPECT_THAT(err.str(), testing::StartsWith("halvo-app: An install that was broken off had left its copy "));
}

TEST_F(InstallOnAMac, ThatLeavesStagingItselfIsNotToldOfAnother) {
  helper->textReply = R"({"code":"untrusted_package","reason":"staging_failed"})";
  helper->duringRequest = [this] { state.makeDirectory("var/db/halvo/install-staging"); };

  EXPECT_EQ(install({.withoutGrant = true}), ExitStatus::refused);

  EXPECT_THAT(err.str(), testing::StartsWith("halvo-app: The package was refused and nothing was changed. The helper "
                                             "could not take the package in: "));
}

TEST_F(InstallOnAMac, ThatFillsTheDiskIsToldSo) {
  helper->textReply = R"({"code":"untrusted_package","reason":"staging_failed"})";
  helper->duringRequest = [this] { fillTheDisk(); };

  EXPECT_EQ(install({.withoutGrant = true}), ExitStatus::refused);

  EXPECT_THAT(err.str(), testing::StartsWith("halvo-app: The disk is full: it has no room for a copy "));
}

TEST_F(InstallOnAMac, ThatHadNothingOfTheProductHasNothingCopiedBack) {
  helper->textReply = R"({"code":"rolled_back","log_path":"/x.log"})";
  helper->duringRequest = [this] { state.makeDirectory("Library/Audio/Plug-Ins/HAL/Halvo.driver"); };

  EXPECT_EQ(install({.withoutGrant = true}), ExitStatus::refused);

  EXPECT_THAT(err.str(), testing::StartsWith("halvo-app: The installer failed. Nothing of the product had been "));
}

TEST_F(InstallOnAMac, ThatHadTheProductHasItCopiedBack) {
  state.makeDirectory("Library/Audio/Plug-Ins/HAL/Halvo.driver");
  helper->textReply = R"({"code":"rolled_back","log_path":"/x.log"})";

  EXPECT_EQ(install({.withoutGrant = true}), ExitStatus::refused);

  EXPECT_THAT(err.str(), testing::StartsWith("halvo-app: The installer failed, and what had been saved "));
}

TEST_F(InstallOnAMac, WithAManifestThatNamesNoVersionIsToldSo) {
  helper->textReply = R"({"code":"downgrade","installed":"2.1","incoming":"0"})";

  EXPECT_EQ(install({.withoutGrant = true}), ExitStatus::refused);

  EXPECT_THAT(err.str(), testing::StartsWith("halvo-app: The manifest names no \"driver_version\", and version 2.1 "));
}

TEST_F(InstallOnAMac, WithoutRoomForAnApprovalIsToldSo) {
  fillTheDisk();
  knowTheRight();
  letTheAdministrator("allow");
  sim::FrameworkProbe probe;
  probe.failNext("AuthorizationCopyRights", -60005);

  EXPECT_EQ(install({}), ExitStatus::unauthorized);

  EXPECT_THAT(helper->requests, ElementsAre("ping"));
  EXPECT_THAT(err.str(), testing::StartsWith("halvo-app: The disk is full, and the system needs room to ask "));
}

TEST_F(CommandsTest, ALegacyRequestThatIsCutOffIsNotRepeatedSinceAnOldHelperActsOnIt) {
  helper->requestFailure = {ServiceFailure::Kind::interrupted, "gone"};

  EXPECT_EQ(run({.verb = Verb::prepareRemoval, .legacy = true}), ExitStatus::interrupted);

  EXPECT_THAT(helper->requests, ElementsAre("legacy prepareForRemoval false"));
}

TEST_F(CommandsTest, AChangeCarriesTheApprovalOfAnAdministrator) {
  knowTheRight();
  letTheAdministrator("allow");

  state.makeFile("Halvo.app/Contents/MacOS/halvo-app");

  EXPECT_EQ(run({.verb = Verb::removeBundle, .path = state.path("Halvo.app")}), ExitStatus::success);

  EXPECT_THAT(helper->requests, ElementsAre("ping", "removeAppBundle 32 bytes " + state.path("Halvo.app")));
  EXPECT_TRUE(isNamed(state.path("authorization-prompts")));
}

TEST_F(CommandsTest, WithoutAGrantNobodyIsAsked) {
  EXPECT_EQ(run({.verb = Verb::prepareRemoval, .withoutGrant = true}), ExitStatus::success);

  EXPECT_FALSE(isNamed(state.path("authorization-prompts")));
}

struct ApprovalRow {
  const char* name;
  const char* failing;
  std::int32_t status;
  const char* err;
};

class MissingApproval : public CommandsTest, public testing::WithParamInterface<ApprovalRow> {};

TEST_P(MissingApproval, EndsItBeforeTheHelperIsAsked) {
  knowTheRight();
  letTheAdministrator("allow");
  sim::FrameworkProbe probe;
  probe.failNext(GetParam().failing, GetParam().status);

  EXPECT_EQ(run({.verb = Verb::prepareRemoval}), ExitStatus::unauthorized);

  EXPECT_THAT(helper->requests, ElementsAre("ping"));
  EXPECT_EQ(out.str(), "");
  EXPECT_EQ(err.str(), GetParam().err);
}

INSTANTIATE_TEST_SUITE_P(
    Table, MissingApproval,
    testing::Values(
        ApprovalRow{"NoAuthorization", "AuthorizationCreate", -60008,
                    "halvo-app: The system's authorization service could not be used (status -60008). Nothing was "
                    "changed. Try again; if that does not help, restart the Mac.\n"},
        ApprovalRow{"Denied", "AuthorizationCopyRights", -60005,
                    "halvo-app: An administrator has to approve this, and none did (status -60005). Nothing was "
                    "changed. Try again with the name and password of an administrator.\n"},
        ApprovalRow{"Cancelled", "AuthorizationCopyRights", -60006,
                    "halvo-app: The question for an administrator's approval was cancelled (status -60006). Nothing "
                    "was changed. Try again and approve when the system asks.\n"},
        ApprovalRow{"NoScreen", "AuthorizationCopyRights", -60007,
                    "halvo-app: An administrator has to approve this, and the system cannot ask for it in this "
                    "session (status -60007). Nothing was changed. Try again in a window of a user who is logged in at "
                    "the screen.\n"},
        ApprovalRow{"NoForm", "AuthorizationMakeExternalForm", -60009,
                    "halvo-app: The system's authorization service could not be used (status -60009). Nothing was "
                    "changed. Try again; if that does not help, restart the Mac.\n"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(CommandsTest, ARefusedRemovalIsExplainedByWhatIsVisiblyWrongWithThePath) {
  knowTheRight();
  letTheAdministrator("allow");
  helper->boolReply = false;

  EXPECT_EQ(run({.verb = Verb::removeBundle, .withoutChecks = true, .path = "/Applications/Other.app"}),
            ExitStatus::refused);

  EXPECT_EQ(err.str(),
            "halvo-app: The helper did not remove it. The path /Applications/Other.app does not end with Halvo.app: "
            "name the application.\n");
}

class UninstallCommand : public CommandsTest {
 protected:
  UninstallCommand() { helper->textReply = kDone; }

  static constexpr const char* kDone = R"({"code":"ok","gui_app_path":"/Applications/Halvo.app"})";
  const CommandLine uninstall{.verb = Verb::uninstall};
  const CommandLine unapproved{.verb = Verb::uninstall, .withoutGrant = true};
};

TEST_F(UninstallCommand, AsksOnceForApprovalOverOneConnectionAndShowsEveryAnswer) {
  knowTheRight();
  letTheAdministrator("allow");
  sim::FrameworkProbe probe;
  int connections = 0;
  Conversation conversation([&] {
    ++connections;
    return std::make_unique<ScriptedClient>(helper);
  });

  EXPECT_EQ(runCommand(uninstall, conversation, {.out = out, .err = err}), ExitStatus::success);

  EXPECT_THAT(helper->requests,
              ElementsAre("ping", "prepareForRemoval 32 bytes false",
                          "removeAppBundle 32 bytes /Applications/Halvo.app", "finalizeRemoval 32 bytes"));
  EXPECT_EQ(out.str(), std::string(kDone) + "\ntrue\ntrue\n");
  EXPECT_EQ(err.str(), "");
  EXPECT_EQ(connections, 1);
  EXPECT_EQ(std::ranges::count(probe.calls(), "AuthorizationCreate flags=0 rights="), 1);
}

TEST_F(UninstallCommand, EndsWhereThePartsStay) {
  helper->textReply = R"({"code":"audio_active"})";

  EXPECT_EQ(run(unapproved), ExitStatus::refused);

  EXPECT_THAT(helper->requests, ElementsAre("ping", "prepareForRemoval 32 bytes false"));
  EXPECT_THAT(err.str(),
              testing::EndsWith("\nhalvo-app: The uninstall ends here. The application and its helper stay as they "
                                "are.\n"));
}

TEST_F(UninstallCommand, EndsWhereTheApplicationStays) {
  helper->boolReply = false;

  EXPECT_EQ(run({.verb = Verb::uninstall, .withoutGrant = true}), ExitStatus::unauthorized);

  EXPECT_THAT(helper->requests, ElementsAre("ping", "prepareForRemoval 32 bytes false",
                                            "removeAppBundle 32 bytes /Applications/Halvo.app"));
  EXPECT_EQ(out.str(), std::string(kDone) + "\nfalse\n");
  EXPECT_THAT(err.str(),
              testing::EndsWith("\nhalvo-app: The uninstall ends here. The system parts are removed; the application "
                                "and its helper are not.\n"));
}

class ReplyThatNamesNoApplication : public UninstallCommand, public testing::WithParamInterface<const char*> {};

TEST_P(ReplyThatNamesNoApplication, IsFollowedByARequestThatNamesNone) {
  helper->textReply = GetParam();

  run(unapproved);

  EXPECT_THAT(helper->requests, Contains("removeAppBundle 32 bytes "));
}

INSTANTIATE_TEST_SUITE_P(Table, ReplyThatNamesNoApplication,
                         testing::Values(R"({"code":"ok"})", R"({"code":"ok","gui_app_path":7})",
                                         R"({"code":"ok","gui_app_path":"/Applications/Halvo.app")"));

TEST_F(UninstallCommand, SaysThatTheHelperStaysWhereItDoes) {
  helper->finalReply = false;

  EXPECT_EQ(run(unapproved), ExitStatus::unauthorized);

  EXPECT_EQ(out.str(), std::string(kDone) + "\ntrue\nfalse\n");
  EXPECT_THAT(err.str(),
              testing::EndsWith("\nhalvo-app: The uninstall ends here. The system parts and the application are "
                                "removed; the helper stays registered. It goes when the application is put back and "
                                "\"halvo-app finalize\" succeeds.\n"));
}

TEST_F(UninstallCommand, OfAPathThatIsWrongAsksNobody) {
  EXPECT_EQ(run({.verb = Verb::uninstall, .path = "Halvo.app"}), ExitStatus::unusableInput);

  EXPECT_THAT(helper->requests, IsEmpty());
}

TEST_F(CommandsTest, EveryAuthorizationReferenceIsFreed) {
  knowTheRight();
  letTheAdministrator("allow");
  const std::int64_t before = sim::FrameworkProbe::liveObjects();

  run({.verb = Verb::prepareRemoval});
  letTheAdministrator("deny");
  run({.verb = Verb::prepareRemoval});

  EXPECT_EQ(sim::FrameworkProbe::liveObjects(), before);
}

// Standard error, before somebody who does the next thing each time that something was shown.
class WatchedText final : public std::stringbuf {
 public:
  std::deque<std::function<void()>> steps;

 private:
  int sync() override {
    if (steps.empty()) return 0;
    const auto step = steps.front();
    steps.pop_front();
    step();
    return 0;
  }
};

TEST_F(CommandsTest, WhatTakesLongIsSaidOnceAndTheNewLinesOfItsLogAreShown) {
  const std::string log = state.makeFile("install.log", "from before\n");
  std::ofstream writer(log, std::ios::app);
  WatchedText shown;
  std::ostream watched(&shown);
  helper->answersAtOnce = false;
  shown.steps = {[&] { writer << "begun\n"
                              << std::flush; }, [] {},
                 [&] { writer << "ended\n"
                              << std::flush,
                           helper->answer(); }};

  Conversation conversation([this] { return std::make_unique<ScriptedClient>(helper); },
                            {.patience = {}, .betweenLooks = {}});
  const ExitStatus status = runCommand({.verb = Verb::prepareRemoval, .withoutGrant = true}, conversation,
                                       {out, watched, [&](const auto&) { return log; }});

  EXPECT_EQ(status, ExitStatus::success);
  EXPECT_EQ(
      shown.str(),
      "halvo-app: Waiting for the helper; interrupting this does not stop it. It makes one change at a time, and "
      "does not tell whether another one comes first. New lines of /var/log/halvo-uninstall.log:\n  begun\n  ended\n");
}

}  // namespace
}  // namespace halvo
