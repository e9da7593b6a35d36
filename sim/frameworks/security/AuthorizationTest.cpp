#include <Security/Security.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>

#include "sim/frameworks/security/AuthorizationTestSupport.h"

namespace halvo::sim {
namespace {

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
  EXPECT_EQ(AuthorizationFree(nullptr, 0), errAuthorizationInvalidRef);
  EXPECT_EQ(AuthorizationMakeExternalForm(nullptr, &form), errAuthorizationInvalidRef);
  EXPECT_EQ(AuthorizationMakeExternalForm(client.get(), nullptr), errAuthorizationInvalidPointer);
  EXPECT_EQ(AuthorizationCreateFromExternalForm(nullptr, &reference), errAuthorizationInvalidPointer);
  EXPECT_EQ(AuthorizationCopyRights(client.get(), nullptr, nullptr, 0, nullptr), errAuthorizationInvalidSet);
  EXPECT_EQ(copyRight(Handle(), kExtend), errAuthorizationInvalidRef);
  EXPECT_EQ(reference, nullptr);
}

TEST_F(AuthorizationTest, AnItemWithALengthButNoValueIsRefused) {
  const Handle client = create();
  AuthorizationItem item = {kRight, 1, nullptr, 0};
  const AuthorizationRights rights = {1, &item};

  EXPECT_EQ(AuthorizationCopyRights(client.get(), &rights, nullptr, kAsk, nullptr), errAuthorizationInvalidSet);
}

TEST_F(AuthorizationTest, WithoutAStateFolderTheDaemonDoesNotAnswer) {
  setStateRoot(state_.path() / "missing");
  AuthorizationRef reference = nullptr;

  EXPECT_EQ(AuthorizationCreate(nullptr, nullptr, 0, &reference), errAuthorizationInternal);
  EXPECT_EQ(reference, nullptr);
}

}  // namespace
}  // namespace halvo::sim
