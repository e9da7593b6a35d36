#include <Security/Security.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/frameworks/security/CodeSigningTestSupport.h"
#include "sim/frameworks/testing/RunningProgram.h"

namespace halvo::sim {
namespace {

constexpr SecCSFlags kSomeFlag = 1U << 5U;

class CodeSigningTest : public testing::Test {
 protected:
  std::filesystem::path makeProgram(const std::optional<CodeSignature>& signature) {
    auto place = directory_.path() / "program";
    makeWaitingProgram(place, signature);
    return place;
  }

  TemporaryDirectory directory_;
};

TEST_F(CodeSigningTest, ASignedProgramIsFoundByItsTokenAndJudged) {
  const RunningProgram program(makeProgram(kApp));

  const Found found = find(attributesFor(tokenOf(program.pid())).get());

  ASSERT_EQ(found.status, errSecSuccess);
  EXPECT_EQ(validity(found.code.get()), errSecSuccess);
  EXPECT_EQ(validity(found.code.get(), "identifier \"com.halvo.other\""), errSecCSReqFailed);
}

TEST_F(CodeSigningTest, AnUnsignedProgramIsUnsignedWhateverIsRequired) {
  const RunningProgram program(makeProgram(std::nullopt));
  const Found found = find(attributesFor(tokenOf(program.pid())).get());

  EXPECT_EQ(validity(found.code.get()), errSecCSUnsigned);
  EXPECT_EQ(SecCodeCheckValidityWithErrors(found.code.get(), kSecCSDefaultFlags, nullptr, nullptr), errSecCSUnsigned);
}

TEST_F(CodeSigningTest, AProgramWhoseFileWasRemovedIsNotFound) {
  const RunningProgram program(makeProgram(kApp));
  std::filesystem::remove(directory_.path() / "program");

  const Found found = find(attributesFor(tokenOf(program.pid())).get());

  EXPECT_EQ(found.status, kNoSuchFile);
  EXPECT_EQ(found.code, nullptr);
}

TEST_F(CodeSigningTest, AProgramWhoseFileWasReplacedIsNotWhatLiesOnDisk) {
  const auto place = makeProgram(kApp);
  const RunningProgram program(place);
  const auto update = directory_.path() / "update";
  makeWaitingProgram(update, kApp);
  std::filesystem::rename(update, place);

  const Found found = find(attributesFor(tokenOf(program.pid())).get());

  ASSERT_EQ(found.status, errSecSuccess);
  EXPECT_EQ(validity(found.code.get()), errSecCSStaticCodeChanged);
}

TEST_F(CodeSigningTest, AProgramThatWasAlteredAfterSigningHasABrokenSignature) {
  const auto place = makeProgram(kApp);
  std::fstream file(place, std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(15);  // padding of the header, which nobody reads
  file.put('x');
  file.close();
  const RunningProgram program(place);

  EXPECT_EQ(validity(find(attributesFor(tokenOf(program.pid())).get()).code.get()), errSecCSSignatureFailed);
}

TEST_F(CodeSigningTest, AScriptCountsAsItsInterpreter) {
  const auto interpreter = makeProgram(CodeSignature{"com.apple.cat", "", "apple"});
  const auto script = directory_.write("script", "#!" + interpreter.string() + " -\n");
  std::filesystem::permissions(script, std::filesystem::perms::owner_all);
  ASSERT_TRUE(signExecutable(script, kApp));
  const RunningProgram program(script);

  const Found found = find(attributesFor(tokenOf(program.pid())).get());

  EXPECT_EQ(validity(found.code.get()), errSecCSReqFailed);
  EXPECT_EQ(validity(found.code.get(), "identifier \"com.apple.cat\""), errSecSuccess);
}

TEST_F(CodeSigningTest, AnotherVersionOfTheProcessNumberIsNotFound) {
  const RunningProgram program(makeProgram(kApp));
  audit_token_t token = tokenOf(program.pid());
  ++token.val[7];

  const Found found = find(attributesFor(token).get());

  EXPECT_EQ(found.status, errSecCSNoSuchCode);
  EXPECT_EQ(found.code, nullptr);
}

TEST_F(CodeSigningTest, AProcessThatHasGoneIsNotFound) {
  RunningProgram program(makeProgram(kApp));
  const audit_token_t token = tokenOf(program.pid());
  program.end();

  EXPECT_EQ(find(attributesFor(token).get()).status, kNoSuchProcess);
}

TEST_F(CodeSigningTest, AProcessThatGoesAfterItWasFoundIsNotValid) {
  RunningProgram program(makeProgram(kApp));
  const Found found = find(attributesFor(tokenOf(program.pid())).get());
  program.end();

  EXPECT_EQ(validity(found.code.get()), kNoSuchProcess);
}

TEST_F(CodeSigningTest, AnotherUsersProgramIsReadWithoutTheRightToTraceIt) {
  if (::geteuid() != 0) GTEST_SKIP() << "running a program as another user needs root";
  ASSERT_EQ(::chmod(directory_.path().c_str(), 0755), 0);
  const RunningProgram program(makeProgram(kApp), 501);
  const audit_token_t token = tokenOf(program.pid());
  const auto judgeWithoutTracing = [&] {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, 2> sets{};
    static_cast<void>(::syscall(SYS_capget, &header, sets.data()));
    sets[0].effective &= ~(1U << CAP_SYS_PTRACE);
    static_cast<void>(::syscall(SYS_capset, &header, sets.data()));
    const bool denied = ::open(("/proc/" + std::to_string(program.pid()) + "/exe").c_str(), O_RDONLY) < 0;
    const Found found = find(attributesFor(token).get());
    const bool rootAgain = ::open((directory_.path() / "new").c_str(), O_CREAT | O_WRONLY, 0600) >= 0;
    std::_Exit(denied && rootAgain && found.status == 0 && validity(found.code.get()) == 0 ? 0 : 1);
  };

  EXPECT_EXIT(judgeWithoutTracing(), testing::ExitedWithCode(0), "");
}

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
  EXPECT_EQ(find(attributesWith(kSecGuestAttributeAudit, kCFBooleanTrue).get()).status, errSecCSInvalidAttributeValues);
}

TEST(GuestAttributesTest, OtherAttributesAreNotSupported) {
  EXPECT_EQ(find(attributesWith(makeString("pid").get(), kCFBooleanTrue).get()).status,
            errSecCSUnsupportedGuestAttributes);
}

TEST(GuestAttributesTest, NoAttributesFindTheKernelWhichMeetsNoRequirement) {
  const ScopedCF<CFDictionaryRef> none(CFDictionaryCreate(nullptr, nullptr, nullptr, 0, nullptr, nullptr));

  const Found found = find(none.get());

  ASSERT_EQ(found.status, errSecSuccess);
  EXPECT_EQ(validity(found.code.get(), "anchor apple generic"), errSecCSReqFailed);
}

TEST(GuestAttributesTest, FlagsAreRefusedAndTheResultStaysUntouched) {
  auto* const marker = reinterpret_cast<SecCodeRef>(0x1);
  SecCodeRef code = marker;

  EXPECT_EQ(SecCodeCopyGuestWithAttributes(nullptr, nullptr, kSomeFlag, &code), errSecCSInvalidFlags);
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

  EXPECT_EQ(SecCodeCheckValidityWithErrors(nullptr, 0, nullptr, nullptr), errSecCSObjectRequired);
  EXPECT_EQ(SecCodeCheckValidityWithErrors(foreign, 0, nullptr, nullptr), errSecCSInvalidObjectRef);
  EXPECT_EQ(SecCodeCheckValidityWithErrors(self.code.get(), kSomeFlag, nullptr, nullptr), errSecCSInvalidFlags);
}

TEST(RequirementCreationTest, BadTextIsInvalidAndTheResultStaysUntouched) {
  auto* const marker = reinterpret_cast<SecRequirementRef>(0x1);
  SecRequirementRef requirement = marker;

  EXPECT_EQ(SecRequirementCreateWithString(makeString("anchor").get(), 0, &requirement), errSecCSReqInvalid);
  EXPECT_EQ(SecRequirementCreateWithString(makeString("anchor apple generic").get(), kSomeFlag, &requirement),
            errSecCSInvalidFlags);
  EXPECT_EQ(SecRequirementCreateWithString(nullptr, 0, &requirement), errSecCSObjectRequired);
  EXPECT_EQ(requirement, marker);
}

}  // namespace
}  // namespace halvo::sim
