// The authorizer and the simulated Authorization Services.
#include "HalvoHelper/security/RealAdminAuthorizer.h"

#include <Security/Security.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <span>
#include <string>
#include <vector>

#include "HalvoHelper/security/AdminRight.h"
#include "HalvoHelper/security/ScopedAuthorization.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/frameworks/testing/FrameworkProbe.h"
#include "sim/support/MachinePaths.h"

namespace halvo {
namespace {

using sim::FrameworkProbe;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

using Form = std::vector<std::byte>;

// An item with a value or flags, an environment or a wish for the granted rights would show in the text of the call.
constexpr const char* kRight = "com.halvo.helper.manage-system";
constexpr const char* kCopyRights = "AuthorizationCopyRights flags=2 rights=com.halvo.helper.manage-system";
constexpr const char* kFree = "AuthorizationFree flags=0";

// A client's authorization, as the application makes one. It stays usable while this object lives.
class ClientAuthorization {
 public:
  ClientAuthorization() {
    AuthorizationRef raw = nullptr;
    AuthorizationCreate(nullptr, kAuthorizationEmptyEnvironment, kAuthorizationFlagDefaults, &raw);
    reference_.reset(raw);
  }

  OSStatus obtain(const char* right) const {
    AuthorizationItem item = {right, 0, nullptr, 0};
    const AuthorizationRights rights = {1, &item};
    return AuthorizationCopyRights(reference_.get(), &rights, kAuthorizationEmptyEnvironment,
                                   kAuthorizationFlagExtendRights | kAuthorizationFlagInteractionAllowed, nullptr);
  }

  Form externalForm() const {
    AuthorizationExternalForm form{};
    AuthorizationMakeExternalForm(reference_.get(), &form);
    const auto bytes = std::as_bytes(std::span(form.bytes));
    return {bytes.begin(), bytes.end()};
  }

 private:
  ScopedAuthorization reference_;
};

class RealAdminAuthorizerTest : public testing::Test {
 protected:
  RealAdminAuthorizerTest() {
    sim::setStateRoot(state_.path());
    halvoRegisterAdminRight();
  }

  // An authorization for which the user gave the password.
  ClientAuthorization granted(const char* right = kRight) {
    state_.write("authorization-answer", "allow\n");
    ClientAuthorization client;
    EXPECT_EQ(client.obtain(right), errAuthorizationSuccess);
    return client;
  }

  std::string prompts() const { return state_.read("authorization-prompts"); }

  TemporaryDirectory state_;
};

class ExternalFormOfWrongLength : public RealAdminAuthorizerTest, public testing::WithParamInterface<std::size_t> {};

TEST_P(ExternalFormOfWrongLength, NeverReachesAuthorizationServices) {
  const FrameworkProbe probe;

  EXPECT_FALSE(RealAdminAuthorizer().isAuthorized(Form(GetParam())));

  EXPECT_THAT(probe.calls(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Lengths, ExternalFormOfWrongLength, testing::Values(0, 1, 31, 33, 64, 4096),
                         [](const auto& length) { return std::to_string(length.param) + "Bytes"; });

TEST_F(RealAdminAuthorizerTest, RefusesAGrantedFormWithOneByteMore) {
  const ClientAuthorization client = granted();
  Form form = client.externalForm();
  form.push_back(std::byte{0});

  EXPECT_FALSE(RealAdminAuthorizer().isAuthorized(form));
}

TEST_F(RealAdminAuthorizerTest, AcceptsAFormThatCarriesTheRight) {
  const ClientAuthorization client = granted();
  const Form form = client.externalForm();

  EXPECT_TRUE(RealAdminAuthorizer().isAuthorized(form));
}

TEST_F(RealAdminAuthorizerTest, AsksOnceForTheRightWithoutInteractionAndFreesItsReference) {
  const ClientAuthorization client = granted();
  const Form form = client.externalForm();
  const FrameworkProbe probe;

  RealAdminAuthorizer().isAuthorized(form);

  EXPECT_THAT(probe.calls(), ElementsAre(StartsWith("AuthorizationCreateFromExternalForm form="), kCopyRights, kFree));
}

TEST_F(RealAdminAuthorizerTest, PassesTheBytesUnchanged) {
  Form form(32);
  form.front() = std::byte{0x01};
  form.back() = std::byte{0xFE};
  const FrameworkProbe probe;

  RealAdminAuthorizer().isAuthorized(form);

  EXPECT_THAT(probe.calls(), ElementsAre("AuthorizationCreateFromExternalForm form="
                                         "01000000000000000000000000000000000000000000000000000000000000fe"));
}

TEST_F(RealAdminAuthorizerTest, LeavesTheGrantToTheClient) {
  const ClientAuthorization client = granted();
  const Form form = client.externalForm();

  EXPECT_TRUE(RealAdminAuthorizer().isAuthorized(form));
  EXPECT_TRUE(RealAdminAuthorizer().isAuthorized(form));
}

TEST_F(RealAdminAuthorizerTest, RefusesBytesThatAreNoLiveForm) {
  const FrameworkProbe probe;

  EXPECT_FALSE(RealAdminAuthorizer().isAuthorized(Form(32, std::byte{0x5A})));

  EXPECT_THAT(probe.calls(), ElementsAre(StartsWith("AuthorizationCreateFromExternalForm form=")));
}

TEST_F(RealAdminAuthorizerTest, RefusesAFormWithoutTheRightAndShowsNoPrompt) {
  state_.write("authorization-answer", "allow\n");
  const ClientAuthorization client;

  EXPECT_FALSE(RealAdminAuthorizer().isAuthorized(client.externalForm()));

  EXPECT_EQ(prompts(), "");
}

TEST_F(RealAdminAuthorizerTest, FreesItsReferenceAfterARefusal) {
  const ClientAuthorization client;
  const Form form = client.externalForm();
  const auto before = FrameworkProbe::liveObjects();
  const FrameworkProbe probe;

  EXPECT_FALSE(RealAdminAuthorizer().isAuthorized(form));

  EXPECT_THAT(probe.calls(), ElementsAre(StartsWith("AuthorizationCreateFromExternalForm form="), kCopyRights, kFree));
  EXPECT_EQ(FrameworkProbe::liveObjects(), before);
}

TEST_F(RealAdminAuthorizerTest, RefusesAFormWhoseClientFreedIt) {
  Form form = granted().externalForm();

  EXPECT_FALSE(RealAdminAuthorizer().isAuthorized(form));
}

TEST_F(RealAdminAuthorizerTest, DemandsTheRightItIsGiven) {
  const ClientAuthorization client = granted();
  const Form form = client.externalForm();
  const FrameworkProbe probe;

  RealAdminAuthorizer("com.example.other").isAuthorized(form);

  EXPECT_THAT(probe.calls(), Contains("AuthorizationCopyRights flags=2 rights=com.example.other"));
}

TEST_F(RealAdminAuthorizerTest, RefusesWhenTheFormCannotBeTurnedIntoAReference) {
  const ClientAuthorization client = granted();
  const Form form = client.externalForm();
  const auto before = FrameworkProbe::liveObjects();
  FrameworkProbe probe;
  probe.failNext("AuthorizationCreateFromExternalForm", -60008);

  EXPECT_FALSE(RealAdminAuthorizer().isAuthorized(form));

  EXPECT_EQ(probe.calls().size(), 1u);
  EXPECT_EQ(FrameworkProbe::liveObjects(), before);
}

TEST_F(RealAdminAuthorizerTest, RefusesASuccessWithoutAReference) {
  const ClientAuthorization client = granted();
  const Form form = client.externalForm();
  const auto before = FrameworkProbe::liveObjects();
  FrameworkProbe probe;
  probe.nullNext("AuthorizationCreateFromExternalForm");

  EXPECT_FALSE(RealAdminAuthorizer().isAuthorized(form));

  EXPECT_EQ(probe.calls().size(), 1u);
  EXPECT_EQ(FrameworkProbe::liveObjects(), before);
}

TEST_F(RealAdminAuthorizerTest, RefusesAFailingStatusThoughAReferenceCameWithIt) {
  const ClientAuthorization client = granted();
  const Form form = client.externalForm();
  const auto before = FrameworkProbe::liveObjects();
  FrameworkProbe probe;
  probe.failNextWithResult("AuthorizationCreateFromExternalForm", -60008);

  EXPECT_FALSE(RealAdminAuthorizer().isAuthorized(form));

  EXPECT_THAT(probe.calls(), ElementsAre(StartsWith("AuthorizationCreateFromExternalForm form="), kFree));
  EXPECT_EQ(FrameworkProbe::liveObjects(), before);
}

class StatusOfCopyRights : public RealAdminAuthorizerTest, public testing::WithParamInterface<std::int32_t> {};

TEST_P(StatusOfCopyRights, OtherThanSuccessIsARefusal) {
  const ClientAuthorization client = granted();
  const Form form = client.externalForm();
  const auto before = FrameworkProbe::liveObjects();
  FrameworkProbe probe;
  probe.failNext("AuthorizationCopyRights", GetParam());

  EXPECT_FALSE(RealAdminAuthorizer().isAuthorized(form));

  EXPECT_EQ(probe.calls().back(), kFree);
  EXPECT_EQ(FrameworkProbe::liveObjects(), before);
}

INSTANTIATE_TEST_SUITE_P(Statuses, StatusOfCopyRights,
                         testing::Values(-60005, -60006, -60007, -60008, -60002, -1, 1, 100001));

}  // namespace
}  // namespace halvo
