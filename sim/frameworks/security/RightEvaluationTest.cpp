#include <Security/Security.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <ostream>

#include "sim/frameworks/security/AuthorizationTestSupport.h"

namespace halvo::sim {
namespace {

using nlohmann::json;

using RightEvaluationTest = AuthorizationTest;

TEST_F(RightEvaluationTest, ARightTheUserGrantedIsSeenThroughTheExternalForm) {
  const Handle client = create();
  ASSERT_EQ(copyRight(client, kAsk), errAuthorizationSuccess);

  const Opened checker = open(formOf(client));

  ASSERT_EQ(checker.status, errAuthorizationSuccess);
  EXPECT_EQ(copyRight(checker.handle, kExtend), errAuthorizationSuccess);
}

TEST_F(RightEvaluationTest, ARightNobodyGrantedNeedsInteraction) {
  const Handle client = create();
  const Opened checker = open(formOf(client));

  EXPECT_EQ(copyRight(checker.handle, kExtend), errAuthorizationInteractionNotAllowed);
  EXPECT_EQ(copyRight(checker.handle, kAuthorizationFlagDefaults), errAuthorizationDenied);
  EXPECT_EQ(copyRight(checker.handle, kAuthorizationFlagInteractionAllowed), errAuthorizationDenied);
  EXPECT_EQ(state_.read("authorization-prompts"), "");
}

TEST_F(RightEvaluationTest, APromptIsWrittenDown) {
  define({{"class", "user"}, {"group", "admin"}, {"default-prompt", {{"", "Halvo wants to install."}}}});

  ASSERT_EQ(copyRight(create(), kAsk), errAuthorizationSuccess);

  const json prompt = json::parse(state_.read("authorization-prompts"));
  EXPECT_EQ(prompt["right"], kRight);
  EXPECT_EQ(prompt["pid"], ::getpid());
  EXPECT_EQ(prompt["text"], "Halvo wants to install.");
}

TEST_F(RightEvaluationTest, ARightsOwnMechanismsAskInsteadOfThePasswordDialogue) {
  define({{"class", "user"}, {"group", "admin"}, {"mechanisms", {"Plugin:ask"}}, {"default-prompt", {{"", "Text."}}}});

  ASSERT_EQ(copyRight(create(), kAsk), errAuthorizationSuccess);

  const json prompt = json::parse(state_.read("authorization-prompts"));
  EXPECT_EQ(prompt.value("mechanisms", json()), json({"Plugin:ask"}));
  EXPECT_FALSE(prompt.contains("text"));
}

struct AnswerRow {
  const char* name;
  const char* file;
  OSStatus status;
};

class UserAnswer : public RightEvaluationTest, public testing::WithParamInterface<AnswerRow> {};

TEST_P(UserAnswer, DecidesWhatAPromptGives) {
  state_.write("authorization-answer", GetParam().file);
  const Handle client = create();

  EXPECT_EQ(copyRight(client, kAsk), GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(Table, UserAnswer,
                         testing::Values(AnswerRow{"Allow", "allow", errAuthorizationSuccess},
                                         AnswerRow{"Deny", "deny\n", errAuthorizationDenied},
                                         AnswerRow{"Cancel", "cancel", errAuthorizationCanceled},
                                         AnswerRow{"Nothing", "", errAuthorizationDenied}),
                         [](const auto& row) { return row.param.name; });

TEST_F(RightEvaluationTest, ACredentialCountsUntilItsTimeoutHasPassed) {
  const Handle client = create();
  ASSERT_EQ(copyRight(client, kAsk), errAuthorizationSuccess);

  age(290);
  EXPECT_EQ(copyRight(client, kExtend), errAuthorizationSuccess);
  age(310);
  EXPECT_EQ(copyRight(client, kExtend), errAuthorizationInteractionNotAllowed);
}

TEST_F(RightEvaluationTest, ACredentialCountsForEveryLaterRightOfItsAuthorization) {
  define({{"class", "user"}, {"group", "admin"}, {"shared", true}}, "com.example.shared");
  const Handle client = create();

  ASSERT_EQ(copyRight(client, kAsk, "com.example.shared"), errAuthorizationSuccess);

  EXPECT_EQ(copyRight(client, kExtend), errAuthorizationSuccess);
}

TEST_F(RightEvaluationTest, ACredentialCountsForNoRightOfAGroupItsUserIsNotIn) {
  define({{"class", "user"}, {"group", "daemon"}}, "com.example.daemon");
  state_.write("authorization-answer", "allow daemon");
  const Handle client = create();

  ASSERT_EQ(copyRight(client, kAsk, "com.example.daemon"), errAuthorizationSuccess);

  EXPECT_EQ(copyRight(client, kExtend), errAuthorizationInteractionNotAllowed);
}

TEST_F(RightEvaluationTest, AuthorizationsOfALoginShareCredentialsAmongSharedRightsOnly) {
  define({{"class", "user"}, {"group", "admin"}, {"shared", true}}, "com.example.shared");
  const Handle first = create();
  const Handle second = create();

  ASSERT_EQ(copyRight(first, kAsk, "com.example.shared"), errAuthorizationSuccess);

  EXPECT_EQ(copyRight(second, kExtend, "com.example.shared"), errAuthorizationSuccess);
  EXPECT_EQ(copyRight(second, kExtend), errAuthorizationInteractionNotAllowed);
}

TEST_F(RightEvaluationTest, ACredentialForARightThatIsNotSharedStaysWithItsAuthorization) {
  define({{"class", "user"}, {"group", "admin"}, {"shared", true}}, "com.example.shared");

  ASSERT_EQ(copyRight(create(), kAsk), errAuthorizationSuccess);

  EXPECT_EQ(copyRight(create(), kExtend, "com.example.shared"), errAuthorizationInteractionNotAllowed);
}

TEST_F(RightEvaluationTest, ARightNobodyDefinedIsDecidedByTheDefault) {
  const Handle client = create();

  EXPECT_EQ(copyRight(client, kExtend, "com.example.undefined"), errAuthorizationInteractionNotAllowed);
  EXPECT_EQ(copyRight(client, kAsk, "com.example.undefined"), errAuthorizationSuccess);
}

TEST_F(RightEvaluationTest, RootPassesOnlyWhereTheDefinitionLetsIt) {
  if (::geteuid() != 0) GTEST_SKIP() << "speaks about authorizations that root created";
  define({{"class", "user"}, {"allow-root", true}}, "com.example.root");
  define({{"class", "user"}, {"allow-root", 1}}, "com.example.number");
  const Handle client = create();

  EXPECT_EQ(copyRight(client, kExtend, "com.example.root"), errAuthorizationSuccess);
  EXPECT_EQ(copyRight(client, kExtend, "com.example.number"), errAuthorizationInteractionNotAllowed);
}

TEST_F(RightEvaluationTest, TheOwnerOfTheSessionPassesWithoutPasswordOnlyWhereNobodyIsToAuthenticate) {
  define({{"class", "user"}, {"session-owner", true}}, "com.example.owner");
  define({{"class", "user"}, {"session-owner", true}, {"authenticate-user", false}}, "com.example.free");
  const Handle client = create();

  EXPECT_EQ(copyRight(client, kExtend, "com.example.owner"), errAuthorizationInteractionNotAllowed);
  EXPECT_EQ(copyRight(client, 0, "com.example.free"), errAuthorizationSuccess);
}

TEST_F(RightEvaluationTest, OtherClassesDecideWithoutAUser) {
  define({{"class", "allow"}}, "com.example.allow");
  define({{"class", "deny"}}, "com.example.deny");
  define({{"class", "rule"}, {"rule", "com.example.allow"}}, "com.example.rule");
  define({{"class", "rule"}, {"rule", "com.example.circle"}}, "com.example.circle");
  const Handle client = create();

  EXPECT_EQ(copyRight(client, 0, "com.example.allow"), errAuthorizationSuccess);
  EXPECT_EQ(copyRight(client, kAsk, "com.example.deny"), errAuthorizationDenied);
  EXPECT_EQ(copyRight(client, 0, "com.example.rule"), errAuthorizationSuccess);
  EXPECT_EQ(copyRight(client, kAsk, "com.example.circle"), errAuthorizationDenied);
}

TEST_F(RightEvaluationTest, OneRefusedRightFailsTheSet) {
  define({{"class", "allow"}}, "com.example.allow");
  std::array<AuthorizationItem, 2> items = {{{"com.example.allow", 0, nullptr, 0}, {kRight, 0, nullptr, 0}}};
  const AuthorizationRights rights = {2, items.data()};
  const Handle client = create();

  EXPECT_EQ(AuthorizationCopyRights(client.get(), &rights, nullptr, kExtend, nullptr),
            errAuthorizationInteractionNotAllowed);
}

// Whose password fulfils a right, and whose session does without one.
struct MemberRow {
  const char* name;
  const char* answer;
  json definition;
  OSStatus status;
};

void PrintTo(const MemberRow& row, std::ostream* out) { *out << row.answer << " for " << row.definition; }

class AnsweringAccount : public AuthorizationTest, public testing::WithParamInterface<MemberRow> {};

TEST_P(AnsweringAccount, HasToBeInTheGroupOfTheRight) {
  define(GetParam().definition);
  state_.write("authorization-answer", GetParam().answer);

  EXPECT_EQ(copyRight(create(), kAsk), GetParam().status);
}

// The account daemon is in no group but its own, which its entry names as the primary one.
INSTANTIATE_TEST_SUITE_P(
    Table, AnsweringAccount,
    testing::Values(
        MemberRow{"Administrator", "allow", {{"group", "admin"}}, errAuthorizationSuccess},
        MemberRow{
            "AdministratorForAGroupWithoutMembers", "allow", {{"group", "nobody-at-all"}}, errAuthorizationDenied},
        MemberRow{"AdministratorWithoutAGroup", "allow", json::object(), errAuthorizationDenied},
        MemberRow{"Root", "allow root", {{"group", "nobody-at-all"}}, errAuthorizationSuccess},
        MemberRow{"Member", "allow daemon", {{"group", "daemon"}}, errAuthorizationSuccess},
        MemberRow{"OtherAccount", "allow daemon", {{"group", "root"}}, errAuthorizationDenied},
        MemberRow{
            "OtherAccountThatIsNotTheSessionsOwner", "allow daemon", {{"session-owner", true}}, errAuthorizationDenied},
        MemberRow{"NoAccount", "allow no-such-account", {{"group", "admin"}}, errAuthorizationDenied}),
    [](const auto& row) { return row.param.name; });

class SessionOfAnOrdinaryUser : public AuthorizationTest, public testing::WithParamInterface<MemberRow> {};

TEST_P(SessionOfAnOrdinaryUser, IsJudgedByItsOwnerOrByThePasswordThatIsGiven) {
  if (::geteuid() != 0) GTEST_SKIP() << "acting as another user needs root";
  define(GetParam().definition);
  state_.write("authorization-answer", GetParam().answer);
  ASSERT_EQ(::chmod(state_.path().c_str(), 0777), 0);
  const auto askAsDaemon = [] {
    static_cast<void>(::setresuid(1, 1, 1) == 0);
    std::_Exit(copyRight(create(), kAsk) == GetParam().status ? 0 : 1);
  };

  EXPECT_EXIT(askAsDaemon(), testing::ExitedWithCode(0), "");
}

INSTANTIATE_TEST_SUITE_P(
    Table, SessionOfAnOrdinaryUser,
    testing::Values(MemberRow{"FreeForItsGroup",
                              "cancel",
                              {{"authenticate-user", false}, {"group", "daemon"}},
                              errAuthorizationSuccess},
                    MemberRow{"FreeForAnotherGroup",
                              "allow root",
                              {{"authenticate-user", false}, {"group", "root"}},
                              errAuthorizationDenied},
                    MemberRow{"FreeForTheOwner",
                              "cancel",
                              {{"authenticate-user", false}, {"session-owner", true}},
                              errAuthorizationSuccess},
                    MemberRow{"PasswordOfTheOwner", "allow daemon", {{"session-owner", true}}, errAuthorizationSuccess},
                    MemberRow{"NoPassword", "cancel", {{"session-owner", true}}, errAuthorizationCanceled},
                    MemberRow{"NotRoot", "cancel", {{"allow-root", true}}, errAuthorizationCanceled}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace halvo::sim
