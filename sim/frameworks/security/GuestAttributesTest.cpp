#include <Security/Security.h>
#include <bsm/libbsm.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "sim/frameworks/security/CodeSigningTestSupport.h"
#include "sim/frameworks/testing/FrameworkProbe.h"

namespace halvo::sim {
namespace {

TEST(GuestAttributesTest, TheZeroTokenBelongsToNobody) {
  const Found found = find(attributesFor(audit_token_t{}).get());

  EXPECT_EQ(found.status, kNoSuchProcess);
  EXPECT_EQ(found.code, nullptr);
}

TEST(GuestAttributesTest, ATokenOfAnotherLengthIsRefused) {
  EXPECT_EQ(find(attributesFor(tokenOf(::getpid()), 31).get()).status, errSecCSInvalidAttributeValues);
  EXPECT_EQ(find(attributesFor(tokenOf(::getpid()), 33).get()).status, errSecCSInvalidAttributeValues);
}

TEST(GuestAttributesTest, AValueOfAnotherTypeIsRefused) {
  EXPECT_EQ(find(attributesWith(kSecGuestAttributeAudit, CFSTR("text")).get()).status, errSecCSInvalidAttributeValues);
  EXPECT_EQ(find(attributesWith(kSecGuestAttributePid, CFSTR("1")).get()).status, errSecCSInvalidAttributeValues);
}

TEST(GuestAttributesTest, OtherAttributesAreNotSupported) {
  EXPECT_EQ(find(attributesWith(CFSTR("canonical"), kCFBooleanTrue).get()).status, errSecCSUnsupportedGuestAttributes);
}

TEST(GuestAttributesTest, NoAttributesFindTheKernelWhichMeetsNoRequirement) {
  const Owned<CFDictionaryRef> none(CFDictionaryCreate(nullptr, nullptr, nullptr, 0, nullptr, nullptr));

  const Found found = find(none.get());

  ASSERT_EQ(found.status, errSecSuccess);
  EXPECT_EQ(validity(found.code.get(), "anchor apple"), errSecCSReqFailed);
  EXPECT_EQ(validity(found.code.get(), "!anchor apple"), errSecCSReqFailed);
}

TEST(GuestAttributesTest, FlagsAreRefusedAndTheResultStaysUntouched) {
  auto* const marker = reinterpret_cast<SecCodeRef>(0x1);
  SecCodeRef code = marker;

  EXPECT_EQ(SecCodeCopyGuestWithAttributes(nullptr, nullptr, kSecCSQuickCheck, &code), errSecCSInvalidFlags);
  EXPECT_EQ(SecCodeCopyGuestWithAttributes(nullptr, attributesFor({}).get(), 0, &code), kNoSuchProcess);
  EXPECT_EQ(code, marker);
}

TEST(GuestAttributesTest, OnlyTheKernelIsAHost) {
  const Found kernel = find(nullptr);
  const Found self = find(attributesFor(tokenOf(::getpid())).get());
  SecCodeRef code = nullptr;

  EXPECT_EQ(SecCodeCopyGuestWithAttributes(self.code.get(), nullptr, 0, &code), errSecCSNotAHost);
  EXPECT_EQ(SecCodeCopyGuestWithAttributes(kernel.code.get(), nullptr, 0, &code), errSecSuccess);
  CFRelease(code);
}

TEST(ValidityTest, NullAndForeignObjectsAreRefused) {
  const Found self = find(attributesFor(tokenOf(::getpid())).get());
  auto* const foreign = reinterpret_cast<SecCodeRef>(const_cast<void*>(static_cast<CFTypeRef>(kCFBooleanTrue)));

  EXPECT_EQ(SecCodeCheckValidity(nullptr, 0, nullptr), errSecCSObjectRequired);
  EXPECT_EQ(SecCodeCheckValidity(foreign, 0, nullptr), errSecCSInvalidObjectRef);
  EXPECT_EQ(SecCodeCheckValidity(self.code.get(), 1U << 5U, nullptr), errSecCSInvalidFlags);
}

TEST(RequirementCreationTest, BadTextIsInvalidAndTheResultStaysUntouched) {
  auto* const marker = reinterpret_cast<SecRequirementRef>(0x1);
  SecRequirementRef requirement = marker;

  EXPECT_EQ(SecRequirementCreateWithString(CFSTR("anchor"), 0, &requirement), errSecCSReqInvalid);
  EXPECT_EQ(SecRequirementCreateWithString(CFSTR("anchor apple"), kSecCSQuickCheck, &requirement),
            errSecCSInvalidFlags);
  EXPECT_EQ(SecRequirementCreateWithString(nullptr, 0, &requirement), errSecCSObjectRequired);
  EXPECT_EQ(requirement, marker);
}

TEST(CodeSigningProbeTest, CallsAreRecordedWithTheToken) {
  audit_token_t token{};
  token.val[0] = 0x01020304;
  const auto attributes = attributesFor(token);
  const FrameworkProbe probe;

  static_cast<void>(find(attributes.get()));

  EXPECT_THAT(probe.calls(), testing::ElementsAre("SecCodeCopyGuestWithAttributes host=null flags=0 audit=04030201" +
                                                  std::string(56, '0')));
}

TEST(CodeSigningProbeTest, ACallCanSucceedWithoutAResult) {
  FrameworkProbe probe;
  probe.nullNext("SecCodeCopyGuestWithAttributes");

  const Found found = find(attributesFor(tokenOf(::getpid())).get());

  EXPECT_EQ(found.status, errSecSuccess);
  EXPECT_EQ(found.code, nullptr);
}

TEST(CodeSigningProbeTest, NothingIsLeftAlive) {
  const auto before = FrameworkProbe::liveObjects();

  static_cast<void>(validity(find(attributesFor(tokenOf(::getpid())).get()).code.get()));

  EXPECT_EQ(FrameworkProbe::liveObjects(), before);
}

TEST(AuditTokenTest, NamesTheProcessAndItsUser) {
  const audit_token_t token = {{1, 501, 20, 502, 21, 1234, 7, 99}};

  EXPECT_EQ(audit_token_to_euid(token), 501U);
  EXPECT_EQ(audit_token_to_egid(token), 20U);
  EXPECT_EQ(audit_token_to_pid(token), 1234);
  EXPECT_EQ(audit_token_to_pidversion(token), 99);
}

}  // namespace
}  // namespace halvo::sim
