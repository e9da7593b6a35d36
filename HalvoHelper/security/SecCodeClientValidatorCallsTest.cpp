// What the validator asks of the simulated code-signing services, and what it leaves behind.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include "HalvoHelper/security/SecCodeClientValidator.h"
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
constexpr const char* kCompile =
    R"(SecRequirementCreateWithString flags=0 text="identifier \"com.halvo.app\" and anchor apple generic )"
    R"(and certificate leaf[subject.OU] = \"QX4TRM2ZL9\"")";
constexpr const char* kCheck =
    R"(SecCodeCheckValidityWithErrors flags=0 requirement="identifier \"com.halvo.app\" and anchor apple generic )"
    R"(and certificate leaf[subject.OU] = \"QX4TRM2ZL9\"")";
constexpr const char* kLookup = "SecCodeCopyGuestWithAttributes host=null flags=0 audit=";

const sim::CodeSignature kApplication = {"com.halvo.app", "QX4TRM2ZL9", "apple generic"};

class ValidatorCallsTest : public testing::Test {
 protected:
  SecCodeClientValidator validator(const std::string& requirement = kRequirement) {
    return SecCodeClientValidator(requirement, [this](std::string_view line) { log_.emplace_back(line); });
  }

  std::vector<std::string> log_;
};

TEST_F(ValidatorCallsTest, CompilesTheRequirementOnceWithoutFlags) {
  const FrameworkProbe probe;

  const SecCodeClientValidator made = validator();

  EXPECT_THAT(probe.calls(), ElementsAre(kCompile));
}

TEST_F(ValidatorCallsTest, LooksTheClientUpByTheTokenAloneAndChecksTheRequirement) {
  const SignedProcess client(kApplication);
  const SecCodeClientValidator strict = validator();
  const FrameworkProbe probe;

  strict.isAuthorized(client.auditToken());

  EXPECT_THAT(probe.calls(), ElementsAre(StartsWith(kLookup), kCheck));
}

TEST_F(ValidatorCallsTest, PassesThe32BytesOfTheTokenUnchanged) {
  audit_token_t token{};
  std::array<unsigned char, sizeof token> bytes{};
  std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0xE0));
  std::memcpy(&token, bytes.data(), sizeof token);
  const SecCodeClientValidator strict = validator();
  const FrameworkProbe probe;

  strict.isAuthorized(token);

  EXPECT_THAT(probe.calls(),
              ElementsAre(std::string(kLookup) + "e0e1e2e3e4e5e6e7e8e9eaebecedeeeff0f1f2f3f4f5f6f7f8f9fafbfcfdfeff"));
}

class LiveObjects : public ValidatorCallsTest {
 protected:
  SignedProcess client_{kApplication};
  std::int64_t before_ = FrameworkProbe::liveObjects();
  SecCodeClientValidator strict_ = validator();
  std::int64_t withValidator_ = FrameworkProbe::liveObjects();
  FrameworkProbe probe_;
};

TEST_F(LiveObjects, AreTheRequirementAloneInAValidator) { EXPECT_EQ(withValidator_, before_ + 1); }

TEST_F(LiveObjects, AreAsBeforeAfterAnAdmission) {
  EXPECT_TRUE(strict_.isAuthorized(client_.auditToken()));

  EXPECT_EQ(FrameworkProbe::liveObjects(), withValidator_);
}

TEST_F(LiveObjects, AreAsBeforeAfterAFailedLookup) {
  probe_.failNext("SecCodeCopyGuestWithAttributes", -67065);

  EXPECT_FALSE(strict_.isAuthorized(client_.auditToken()));

  EXPECT_EQ(FrameworkProbe::liveObjects(), withValidator_);
  EXPECT_THAT(probe_.calls(), ElementsAre(StartsWith(kLookup)));
  EXPECT_THAT(log_, ElementsAre("halvo-helper: client look-up failed status=-67065"));
}

TEST_F(LiveObjects, AreAsBeforeAfterALookupThatFoundNothing) {
  probe_.nullNext("SecCodeCopyGuestWithAttributes");

  EXPECT_FALSE(strict_.isAuthorized(client_.auditToken()));

  EXPECT_EQ(FrameworkProbe::liveObjects(), withValidator_);
  EXPECT_THAT(probe_.calls(), ElementsAre(StartsWith(kLookup)));
}

TEST_F(LiveObjects, AreAsBeforeAfterAFailedLookupThatCameWithCode) {
  probe_.failNextWithResult("SecCodeCopyGuestWithAttributes", -67065);

  EXPECT_FALSE(strict_.isAuthorized(client_.auditToken()));

  EXPECT_EQ(FrameworkProbe::liveObjects(), withValidator_);
  EXPECT_THAT(probe_.calls(), ElementsAre(StartsWith(kLookup)));
  EXPECT_THAT(log_, ElementsAre("halvo-helper: client look-up failed status=-67065"));
}

TEST_F(LiveObjects, AreAsBeforeAfterAFailedCheck) {
  probe_.failNext("SecCodeCheckValidityWithErrors", -67034);

  EXPECT_FALSE(strict_.isAuthorized(client_.auditToken()));

  EXPECT_EQ(FrameworkProbe::liveObjects(), withValidator_);
  EXPECT_THAT(log_, ElementsAre("halvo-helper: client signature refused status=-67034"));
}

TEST_F(LiveObjects, AreAsBeforeWhenNoDataObjectCanBeMade) {
  probe_.nullNext("CFDataCreate");

  EXPECT_FALSE(strict_.isAuthorized(client_.auditToken()));

  EXPECT_THAT(probe_.calls(), IsEmpty());
  EXPECT_EQ(FrameworkProbe::liveObjects(), withValidator_);
}

TEST_F(LiveObjects, AreAsBeforeWhenNoDictionaryCanBeMade) {
  probe_.nullNext("CFDictionaryCreate");

  EXPECT_FALSE(strict_.isAuthorized(client_.auditToken()));

  EXPECT_THAT(probe_.calls(), IsEmpty());
  EXPECT_EQ(FrameworkProbe::liveObjects(), withValidator_);
}

// Requirements that do not compile.

struct RequirementRow {
  const char* name;
  std::string text;
};

class BadRequirement : public ValidatorCallsTest, public testing::WithParamInterface<RequirementRow> {};

TEST_P(BadRequirement, RefusesEverybodyWithoutALookup) {
  const SignedProcess client(kApplication);
  const SecCodeClientValidator refusing = validator(GetParam().text);
  const FrameworkProbe probe;

  EXPECT_FALSE(refusing.isAuthorized(client.auditToken()));

  EXPECT_THAT(probe.calls(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Table, BadRequirement,
                         testing::Values(RequirementRow{"Empty", ""}, RequirementRow{"WithoutAValue", "identifier"},
                                         RequirementRow{"OpenQuote", "identifier \"com.halvo.app"},
                                         RequirementRow{"QuoteInTheIdentifier",
                                                        halvoClientCodeRequirement("QX4TRM2ZL9", "com.halvo\".app")},
                                         RequirementRow{"IllFormedText", "identifier \"\xFF\""}),
                         [](const auto& row) { return row.param.name; });

TEST_F(ValidatorCallsTest, RefusesEverybodyWhenCompilingAnswersNothing) {
  const SignedProcess client(kApplication);
  FrameworkProbe probe;
  probe.nullNext("SecRequirementCreateWithString");

  EXPECT_FALSE(validator().isAuthorized(client.auditToken()));

  EXPECT_THAT(probe.calls(), ElementsAre(kCompile));
}

TEST_F(ValidatorCallsTest, DoesNotCompileARequirementThatIsNoText) {
  const FrameworkProbe probe;

  const SecCodeClientValidator refusing = validator("identifier \"\xFF\"");

  EXPECT_THAT(probe.calls(), IsEmpty());
}

TEST_F(ValidatorCallsTest, LeavesNoObjectBehindABadRequirement) {
  const auto before = FrameworkProbe::liveObjects();

  const SecCodeClientValidator refusing = validator("identifier");

  EXPECT_EQ(FrameworkProbe::liveObjects(), before);
}

}  // namespace
}  // namespace halvo
