// The validator and the simulated code-signing services, over real processes.
#include "HalvoHelper/security/SecCodeClientValidator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "HalvoHelper/testing/SignedProcess.h"
#include "sim/frameworks/testing/FrameworkProbe.h"

namespace halvo {
namespace {

using sim::FrameworkProbe;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* kRequirement =
    R"(identifier "com.halvo.app" and anchor apple generic and certificate leaf[subject.OU] = "QX4TRM2ZL9")";
constexpr const char* kLookup = "SecCodeCopyGuestWithAttributes host=null flags=0 audit=";

const sim::CodeSignature kApplication = {"com.halvo.app", "QX4TRM2ZL9", "apple generic"};

TEST(ClientCodeRequirementTest, NamesIdentifierAnchorAndTeam) {
  EXPECT_EQ(halvoClientCodeRequirement("QX4TRM2ZL9", "com.halvo.app"), kRequirement);
}

TEST(ClientCodeRequirementTest, InsertsItsValuesAsTheyAre) {
  EXPECT_EQ(halvoClientCodeRequirement("T\"", "a\"b"),
            R"(identifier "a"b" and anchor apple generic and certificate leaf[subject.OU] = "T"")");
}

class SecCodeClientValidatorTest : public testing::Test {
 protected:
  SecCodeClientValidator validator(const std::string& requirement = kRequirement) {
    return SecCodeClientValidator(requirement, [this](std::string_view line) { log_.emplace_back(line); });
  }

  std::vector<std::string> log_;
};

// Who is admitted.

TEST_F(SecCodeClientValidatorTest, AdmitsTheApplication) {
  const SignedProcess client(kApplication);

  EXPECT_TRUE(validator().isAuthorized(client.auditToken()));

  EXPECT_THAT(log_, IsEmpty());
}

struct ImpostorRow {
  const char* name;
  std::optional<sim::CodeSignature> signature;
  const char* logLine;
};

class Impostor : public SecCodeClientValidatorTest, public testing::WithParamInterface<ImpostorRow> {};

TEST_P(Impostor, IsRefusedAndTheStatusLogged) {
  const SignedProcess client(GetParam().signature);

  EXPECT_FALSE(validator().isAuthorized(client.auditToken()));

  EXPECT_THAT(log_, ElementsAre(GetParam().logLine));
}

INSTANTIATE_TEST_SUITE_P(Table, Impostor,
                         testing::Values(ImpostorRow{"OtherIdentifier",
                                                     {{"com.halvo.app2", "QX4TRM2ZL9", "apple generic"}},
                                                     "halvo-helper: client signature refused status=-67050"},
                                         ImpostorRow{"IdentifierInOtherCase",
                                                     {{"com.halvo.App", "QX4TRM2ZL9", "apple generic"}},
                                                     "halvo-helper: client signature refused status=-67050"},
                                         ImpostorRow{"OtherTeam",
                                                     {{"com.halvo.app", "ABCDE12345", "apple generic"}},
                                                     "halvo-helper: client signature refused status=-67050"},
                                         ImpostorRow{"NoTeam",
                                                     {{"com.halvo.app", "", "apple generic"}},
                                                     "halvo-helper: client signature refused status=-67050"},
                                         ImpostorRow{"AdHoc",
                                                     {{"com.halvo.app", "QX4TRM2ZL9", "adhoc"}},
                                                     "halvo-helper: client signature refused status=-67050"},
                                         ImpostorRow{"Unsigned", std::nullopt,
                                                     "halvo-helper: client signature refused status=-67062"}),
                         [](const auto& row) { return row.param.name; });

TEST_F(SecCodeClientValidatorTest, RefusesAClientThatHasExited) {
  SignedProcess client(kApplication);
  client.end();

  EXPECT_FALSE(validator().isAuthorized(client.auditToken()));

  EXPECT_THAT(log_, ElementsAre(StartsWith("halvo-helper: client look-up failed status=")));
}

TEST_F(SecCodeClientValidatorTest, RefusesAnotherProcessUnderTheSameNumber) {
  const SignedProcess client(kApplication);
  audit_token_t earlier = client.auditToken();
  ++earlier.val[7];

  EXPECT_FALSE(validator().isAuthorized(earlier));

  EXPECT_THAT(log_, ElementsAre(StartsWith("halvo-helper: client look-up failed status=")));
}

TEST_F(SecCodeClientValidatorTest, RefusesTheApplicationWhoseProgramWasRemovedWhileItRuns) {
  const SignedProcess client(kApplication);
  std::filesystem::remove(client.program());

  EXPECT_FALSE(validator().isAuthorized(client.auditToken()));

  EXPECT_THAT(log_, ElementsAre("halvo-helper: client look-up failed status=100002"));
}

TEST_F(SecCodeClientValidatorTest, RefusesTheApplicationWhoseProgramWasReplacedWhileItRuns) {
  const SignedProcess client(kApplication);
  const SignedProcess update(kApplication);
  std::filesystem::rename(update.program(), client.program());

  EXPECT_FALSE(validator().isAuthorized(client.auditToken()));

  EXPECT_THAT(log_, ElementsAre("halvo-helper: client signature refused status=-67034"));
}

TEST_F(SecCodeClientValidatorTest, PassesTheZeroTokenOnAndRefusesIt) {
  const SecCodeClientValidator refusing = validator();
  const FrameworkProbe probe;

  EXPECT_FALSE(refusing.isAuthorized(audit_token_t{}));

  EXPECT_THAT(probe.calls(), ElementsAre(kLookup + std::string(64, '0')));
  EXPECT_THAT(log_, ElementsAre(StartsWith("halvo-helper: client look-up failed status=")));
}

TEST_F(SecCodeClientValidatorTest, JudgesEveryConnectionAfresh) {
  const SecCodeClientValidator strict = validator();
  const SignedProcess impostor({{"com.halvo.app2", "QX4TRM2ZL9", "apple generic"}});
  const SignedProcess client(kApplication);

  EXPECT_TRUE(strict.isAuthorized(client.auditToken()));
  EXPECT_FALSE(strict.isAuthorized(impostor.auditToken()));
  EXPECT_TRUE(strict.isAuthorized(client.auditToken()));
}

}  // namespace
}  // namespace halvo
