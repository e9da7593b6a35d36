// Whose password fulfils a right, and whose session does without one.
#include <Security/Security.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <ostream>

#include "sim/frameworks/security/AuthorizationTestSupport.h"

namespace halvo::sim {
namespace {

using nlohmann::json;

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
