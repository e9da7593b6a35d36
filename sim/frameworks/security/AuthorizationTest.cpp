#include <Security/Security.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "sim/frameworks/testing/FrameworkProbe.h"
#include "sim/support/SimClock.h"
#include "sim/support/StateRoot.h"
#include "sim/support/TemporaryDirectory.h"

namespace halvo::sim {
namespace {

using nlohmann::json;

constexpr AuthorizationFlags kExtend = kAuthorizationFlagExtendRights;
constexpr AuthorizationFlags kAsk = kAuthorizationFlagExtendRights | kAuthorizationFlagInteractionAllowed;
constexpr const char* kRight = "com.halvo.test";

struct Freer {
  void operator()(AuthorizationRef reference) const { AuthorizationFree(reference, kAuthorizationFlagDefaults); }
};
using Handle = std::unique_ptr<std::remove_pointer_t<AuthorizationRef>, Freer>;

Handle create() {
  AuthorizationRef reference = nullptr;
  EXPECT_EQ(AuthorizationCreate(nullptr, kAuthorizationEmptyEnvironment, 0, &reference), errAuthorizationSuccess);
  return Handle(reference);
}

AuthorizationExternalForm formOf(const Handle& handle) {
  AuthorizationExternalForm form{};
  EXPECT_EQ(AuthorizationMakeExternalForm(handle.get(), &form), errAuthorizationSuccess);
  return form;
}

struct Opened {
  OSStatus status;
  Handle handle;
};

Opened open(const AuthorizationExternalForm& form) {
  AuthorizationRef reference = nullptr;
  const OSStatus status = AuthorizationCreateFromExternalForm(&form, &reference);
  return {status, Handle(reference)};
}

OSStatus copyRight(const Handle& handle, AuthorizationFlags flags, const char* right = kRight) {
  AuthorizationItem item = {right, 0, nullptr, 0};
  const AuthorizationRights rights = {1, &item};
  return AuthorizationCopyRights(handle.get(), &rights, kAuthorizationEmptyEnvironment, flags, nullptr);
}

class AuthorizationTest : public testing::Test {
 protected:
  AuthorizationTest() {
    setStateRoot(state_.path());
    state_.write("authorization-answer", "allow\n");
    define({{"class", "user"}, {"group", "admin"}, {"timeout", 300}, {"shared", false}});
  }

  void define(const json& definition, const std::string& right = kRight) const {
    state_.write("authorization-db/" + right + ".json", definition.dump());
  }

  std::filesystem::path onlyToken() const {
    return std::filesystem::directory_iterator(state_.path() / "authorization-tokens")->path();
  }

  // Moves every credential back in time.
  void age(double seconds) const {
    json token = json::parse(state_.read(onlyToken()));
    token["credentials"][0]["obtained"] = uptimeSeconds() - seconds;
    state_.write(onlyToken(), token.dump());
  }

  TemporaryDirectory state_;
};

TEST_F(AuthorizationTest, ARightTheUserGrantedIsSeenThroughTheExternalForm) {
  const Handle client = create();
  ASSERT_EQ(copyRight(client, kAsk), errAuthorizationSuccess);

  const Opened checker = open(formOf(client));

  ASSERT_EQ(checker.status, errAuthorizationSuccess);
  EXPECT_EQ(copyRight(checker.handle, kExtend), errAuthorizationSuccess);
}

TEST_F(AuthorizationTest, ARightNobodyGrantedNeedsInteraction) {
  const Handle client = create();
  const Opened checker = open(formOf(client));

  EXPECT_EQ(copyRight(checker.handle, kExtend), errAuthorizationInteractionNotAllowed);
  EXPECT_EQ(copyRight(checker.handle, kAuthorizationFlagDefaults), errAuthorizationDenied);
  EXPECT_EQ(copyRight(checker.handle, kAuthorizationFlagInteractionAllowed), errAuthorizationDenied);
  EXPECT_EQ(state_.read("authorization-prompts"), "");
}

TEST_F(AuthorizationTest, APromptIsWrittenDown) {
  define({{"class", "user"}, {"timeout", 300}, {"default-prompt", {{"", "Halvo wants to install."}}}});

  ASSERT_EQ(copyRight(create(), kAsk), errAuthorizationSuccess);

  const json prompt = json::parse(state_.read("authorization-prompts"));
  EXPECT_EQ(prompt["right"], kRight);
  EXPECT_EQ(prompt["pid"], ::getpid());
  EXPECT_EQ(prompt["text"], "Halvo wants to install.");
}

struct AnswerRow {
  const char* name;
  const char* file;
  OSStatus status;
};

class UserAnswer : public AuthorizationTest, public testing::WithParamInterface<AnswerRow> {};

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

TEST_F(AuthorizationTest, AMachineWithoutAnAnswerDenies) {
  std::filesystem::remove(state_.path() / "authorization-answer");

  EXPECT_EQ(copyRight(create(), kAsk), errAuthorizationDenied);
}

TEST_F(AuthorizationTest, ACredentialCountsUntilItsTimeoutHasPassed) {
  const Handle client = create();
  ASSERT_EQ(copyRight(client, kAsk), errAuthorizationSuccess);

  age(299);
  EXPECT_EQ(copyRight(client, kExtend), errAuthorizationSuccess);
  age(301);
  EXPECT_EQ(copyRight(client, kExtend), errAuthorizationInteractionNotAllowed);
}

TEST_F(AuthorizationTest, ASharedCredentialDoesNotCountForARightThatIsNotShared) {
  define({{"class", "user"}, {"timeout", 300}, {"shared", true}}, "com.example.shared");
  const Handle client = create();

  ASSERT_EQ(copyRight(client, kAsk, "com.example.shared"), errAuthorizationSuccess);

  EXPECT_EQ(copyRight(client, kExtend, "com.example.shared"), errAuthorizationSuccess);
  EXPECT_EQ(copyRight(client, kExtend), errAuthorizationInteractionNotAllowed);
}

TEST_F(AuthorizationTest, ARightNobodyDefinedIsDecidedByTheDefault) {
  const Handle client = create();

  EXPECT_EQ(copyRight(client, kExtend, "com.example.undefined"), errAuthorizationInteractionNotAllowed);
  EXPECT_EQ(copyRight(client, kAsk, "com.example.undefined"), errAuthorizationSuccess);
}

TEST_F(AuthorizationTest, RootPassesOnlyWhereTheDefinitionLetsIt) {
  if (::geteuid() != 0) GTEST_SKIP() << "speaks about authorizations that root created";
  define({{"class", "user"}, {"allow-root", true}}, "com.example.root");
  define({{"class", "user"}, {"allow-root", 1}}, "com.example.number");
  const Handle client = create();

  EXPECT_EQ(copyRight(client, kExtend, "com.example.root"), errAuthorizationSuccess);
  EXPECT_EQ(copyRight(client, kExtend, "com.example.number"), errAuthorizationInteractionNotAllowed);
}

TEST_F(AuthorizationTest, TheOwnerOfTheSessionPassesWhereTheDefinitionLetsIt) {
  define({{"class", "user"}, {"session-owner", true}}, "com.example.owner");
  const Handle client = create();

  EXPECT_EQ(copyRight(client, kExtend, "com.example.owner"), errAuthorizationInteractionNotAllowed);
  state_.write("gui-sessions", std::to_string(::geteuid()) + "\n");
  EXPECT_EQ(copyRight(client, kExtend, "com.example.owner"), errAuthorizationSuccess);
}

TEST_F(AuthorizationTest, OtherClassesDecideWithoutAUser) {
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

TEST_F(AuthorizationTest, OneRefusedRightFailsTheSetUnlessPartsAreTaken) {
  define({{"class", "allow"}}, "com.example.allow");
  std::array<AuthorizationItem, 2> items = {{{"com.example.allow", 0, nullptr, 0}, {kRight, 0, nullptr, 0}}};
  const AuthorizationRights rights = {2, items.data()};
  const Handle client = create();
  AuthorizationRights* granted = nullptr;

  EXPECT_EQ(AuthorizationCopyRights(client.get(), &rights, nullptr, kExtend, &granted),
            errAuthorizationInteractionNotAllowed);
  EXPECT_EQ(granted, nullptr);
  EXPECT_EQ(
      AuthorizationCopyRights(client.get(), &rights, nullptr, kExtend | kAuthorizationFlagPartialRights, &granted),
      errAuthorizationSuccess);
  ASSERT_EQ(granted->count, 1U);
  EXPECT_STREQ(granted->items[0].name, "com.example.allow");
  AuthorizationFreeItemSet(granted);
}

TEST_F(AuthorizationTest, AFormNobodyMadeIsDenied) {
  const AuthorizationExternalForm form = {"0123456789abcdef0123456789abcde"};

  const Opened checker = open(form);

  EXPECT_EQ(checker.status, errAuthorizationDenied);
  EXPECT_EQ(checker.handle, nullptr);
}

TEST_F(AuthorizationTest, FreeingTheCheckersHandleLeavesTheAuthorizationAlone) {
  const Handle client = create();
  const auto form = formOf(client);

  ASSERT_EQ(open(form).status, errAuthorizationSuccess);

  EXPECT_EQ(open(form).status, errAuthorizationSuccess);
}

TEST_F(AuthorizationTest, DestroyingTheRightsEndsTheAuthorizationForEverybody) {
  const Handle client = create();
  const auto form = formOf(client);

  AuthorizationFree(open(form).handle.release(), kAuthorizationFlagDestroyRights);

  EXPECT_EQ(open(form).status, errAuthorizationDenied);
  EXPECT_EQ(copyRight(client, kAsk), errAuthorizationInvalidRef);
}

TEST_F(AuthorizationTest, TheAuthorizationEndsWithTheLastHandleOfItsCreator) {
  Handle client = create();
  const auto form = formOf(client);

  client.reset();

  EXPECT_EQ(open(form).status, errAuthorizationDenied);
  EXPECT_TRUE(std::filesystem::is_empty(state_.path() / "authorization-tokens"));
}

TEST_F(AuthorizationTest, TheAuthorizationEndsWithTheProcessThatCreatedIt) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);
  const pid_t child = ::fork();
  if (child == 0) {
    const Handle kept = create();
    const auto form = formOf(kept);
    ::_exit(::write(ends[1], &form, sizeof form) == sizeof form ? 0 : 1);
  }
  AuthorizationExternalForm form{};
  ASSERT_EQ(::read(ends[0], &form, sizeof form), static_cast<ssize_t>(sizeof form));
  ASSERT_EQ(::waitpid(child, nullptr, 0), child);

  EXPECT_EQ(open(form).status, errAuthorizationDenied);
}

TEST_F(AuthorizationTest, NullPointersAndReferencesHaveTheirOwnStatuses) {
  const Handle client = create();
  AuthorizationExternalForm form{};
  AuthorizationRef reference = nullptr;

  EXPECT_EQ(AuthorizationCreate(nullptr, nullptr, 0, nullptr), errAuthorizationInvalidPointer);
  EXPECT_EQ(AuthorizationCreate(nullptr, nullptr, 1U << 20U, &reference), errAuthorizationInvalidFlags);
  EXPECT_EQ(AuthorizationFree(nullptr, 0), errAuthorizationInvalidRef);
  EXPECT_EQ(AuthorizationMakeExternalForm(nullptr, &form), errAuthorizationInvalidRef);
  EXPECT_EQ(AuthorizationMakeExternalForm(client.get(), nullptr), errAuthorizationInvalidPointer);
  EXPECT_EQ(AuthorizationCreateFromExternalForm(nullptr, &reference), errAuthorizationInvalidPointer);
  EXPECT_EQ(AuthorizationCopyRights(client.get(), nullptr, nullptr, 0, nullptr), errAuthorizationInvalidSet);
  EXPECT_EQ(copyRight(Handle(), kExtend), errAuthorizationInvalidRef);
  EXPECT_EQ(reference, nullptr);
}

TEST_F(AuthorizationTest, WithoutAStateFolderTheDaemonDoesNotAnswer) {
  setStateRoot(state_.path() / "missing");
  AuthorizationRef reference = nullptr;

  EXPECT_EQ(AuthorizationCreate(nullptr, nullptr, 0, &reference), errAuthorizationInternal);
  EXPECT_EQ(reference, nullptr);
}

TEST_F(AuthorizationTest, AFaultFileMakesACallFail) {
  state_.write("faults/authorization", "copy-rights -60008\ncreate-from-external-form -60002\n");
  const Handle client = create();

  EXPECT_EQ(copyRight(client, kAsk), errAuthorizationInternal);
  EXPECT_EQ(open(formOf(client)).status, errAuthorizationInvalidRef);
}

TEST_F(AuthorizationTest, CallsAreRecordedInOrderAndCanBeScripted) {
  FrameworkProbe probe;
  probe.failNext("AuthorizationCopyRights", errAuthorizationInternal);
  Handle client = create();

  EXPECT_EQ(copyRight(client, kExtend), errAuthorizationInternal);
  EXPECT_EQ(copyRight(client, kExtend), errAuthorizationInteractionNotAllowed);
  client.reset();

  EXPECT_THAT(probe.calls(),
              testing::ElementsAre(
                  "AuthorizationCreate flags=0 rights=", "AuthorizationCopyRights flags=2 rights=com.halvo.test",
                  "AuthorizationCopyRights flags=2 rights=com.halvo.test", "AuthorizationFree flags=0"));
}

TEST_F(AuthorizationTest, HandlesAreCounted) {
  const auto before = FrameworkProbe::liveObjects();
  Handle client = create();

  EXPECT_EQ(FrameworkProbe::liveObjects(), before + 1);
  client.reset();
  EXPECT_EQ(FrameworkProbe::liveObjects(), before);
}

}  // namespace
}  // namespace halvo::sim
