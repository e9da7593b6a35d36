#include "client/AdminGrant.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/frameworks/testing/FrameworkProbe.h"
#include "sim/support/MachinePaths.h"

namespace halvo {
namespace {

using Answer = std::variant<AdminGrant, AdminGrant::Refusal>;
using Calls = std::vector<std::string>;

constexpr const char* kCreate = "AuthorizationCreate flags=0 rights=";
// Extend the rights, ask the user, and do so now.
constexpr const char* kCopyRights = "AuthorizationCopyRights flags=19 rights=com.halvo.helper.manage-system";
constexpr const char* kMakeExternalForm = "AuthorizationMakeExternalForm";
constexpr const char* kFree = "AuthorizationFree flags=0";

class AdminGrantTest : public testing::Test {
 protected:
  AdminGrantTest() {
    sim::setStateRoot(state.path());
    state.makeFile("authorization-db/com.halvo.helper.manage-system.json",
                   R"({"class":"user","group":"admin","timeout":300,"shared":false})");
    state.makeFile("authorization-answer", "allow");
  }
  ~AdminGrantTest() override { sim::setStateRoot("/sim"); }

  TemporaryDirectory state;
  sim::FrameworkProbe probe;
};

// What another process can do with the form.
OSStatus statusOfOpening(const Answer& grant) {
  AuthorizationExternalForm form{};
  std::ranges::transform(std::get<AdminGrant>(grant).externalForm(), std::begin(form.bytes),
                         [](std::byte byte) { return static_cast<char>(byte); });
  AuthorizationRef opened = nullptr;
  const OSStatus status = AuthorizationCreateFromExternalForm(&form, &opened);
  if (opened != nullptr) AuthorizationFree(opened, kAuthorizationFlagDefaults);
  return status;
}

TEST_F(AdminGrantTest, IsObtainedByAskingForTheProductsRightAndNothingElse) {
  EXPECT_TRUE(std::holds_alternative<AdminGrant>(AdminGrant::obtain()));

  EXPECT_THAT(probe.calls(), testing::ElementsAre(kCreate, kCopyRights, kMakeExternalForm, kFree));
}

TEST_F(AdminGrantTest, WithoutARightNobodyIsAsked) {
  EXPECT_TRUE(std::holds_alternative<AdminGrant>(AdminGrant::empty()));

  EXPECT_THAT(probe.calls(), testing::ElementsAre(kCreate, kMakeExternalForm, kFree));
  EXPECT_FALSE(isNamed(state.path("authorization-prompts")));
}

TEST_F(AdminGrantTest, ItsFormLeadsOthersToTheAuthorization) {
  EXPECT_EQ(statusOfOpening(AdminGrant::obtain()), errAuthorizationSuccess);
  EXPECT_EQ(statusOfOpening(AdminGrant::empty()), errAuthorizationSuccess);
}

struct FailureRow {
  const char* name;
  Answer (*ask)();
  const char* failing;
  OSStatus status;
  Calls calls;
};

class FailingAdminGrant : public AdminGrantTest, public testing::WithParamInterface<FailureRow> {};

TEST_P(FailingAdminGrant, TellsTheStatusAndFreesWhatThereIs) {
  probe.failNext(GetParam().failing, GetParam().status);

  const Answer answer = GetParam().ask();

  ASSERT_TRUE(std::holds_alternative<AdminGrant::Refusal>(answer));
  EXPECT_EQ(std::get<AdminGrant::Refusal>(answer).status, GetParam().status);
  EXPECT_EQ(probe.calls(), GetParam().calls);
}

INSTANTIATE_TEST_SUITE_P(Table, FailingAdminGrant,
                         testing::Values(FailureRow{"NoAuthorization",
                                                    AdminGrant::obtain,
                                                    "AuthorizationCreate",
                                                    errAuthorizationInvalidFlags,
                                                    {kCreate}},
                                         FailureRow{"Denied",
                                                    AdminGrant::obtain,
                                                    "AuthorizationCopyRights",
                                                    errAuthorizationDenied,
                                                    {kCreate, kCopyRights, kFree}},
                                         FailureRow{"Cancelled",
                                                    AdminGrant::obtain,
                                                    "AuthorizationCopyRights",
                                                    errAuthorizationCanceled,
                                                    {kCreate, kCopyRights, kFree}},
                                         FailureRow{"NoForm",
                                                    AdminGrant::obtain,
                                                    "AuthorizationMakeExternalForm",
                                                    errAuthorizationExternalizeNotAllowed,
                                                    {kCreate, kCopyRights, kMakeExternalForm, kFree}},
                                         FailureRow{"EmptyWithoutAuthorization",
                                                    AdminGrant::empty,
                                                    "AuthorizationCreate",
                                                    errAuthorizationInvalidFlags,
                                                    {kCreate}},
                                         FailureRow{"EmptyWithoutForm",
                                                    AdminGrant::empty,
                                                    "AuthorizationMakeExternalForm",
                                                    errAuthorizationExternalizeNotAllowed,
                                                    {kCreate, kMakeExternalForm, kFree}}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(AdminGrantTest, SuccessThatBringsNoAuthorizationIsAFailureOfTheSystem) {
  probe.nullNext("AuthorizationCreate");

  const Answer answer = AdminGrant::obtain();

  ASSERT_TRUE(std::holds_alternative<AdminGrant::Refusal>(answer));
  EXPECT_EQ(std::get<AdminGrant::Refusal>(answer).status, errAuthorizationInternal);
  EXPECT_EQ(probe.calls(), Calls{kCreate});
}

}  // namespace
}  // namespace halvo
