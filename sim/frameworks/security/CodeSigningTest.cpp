#include <Security/Security.h>
#include <bsm/libbsm.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>
#include <optional>
#include <string>

#include "sim/frameworks/testing/FrameworkProbe.h"
#include "sim/frameworks/testing/RunningProgram.h"
#include "sim/support/ProcessIdentity.h"
#include "sim/support/TemporaryDirectory.h"

namespace halvo::sim {
namespace {

struct Releaser {
  void operator()(CFTypeRef reference) const { CFRelease(reference); }
};
template <typename Ref>
using Owned = std::unique_ptr<std::remove_pointer_t<Ref>, Releaser>;

const CodeSignature kApp{"com.halvo.app", "QX4TRM2ZL9", "apple generic"};
constexpr OSStatus kNoSuchProcess = 100000 + ESRCH;

audit_token_t tokenOf(pid_t pid) {
  audit_token_t token{};
  token.val[5] = static_cast<unsigned>(pid);
  token.val[7] = processVersion(pid).value_or(0);
  return token;
}

Owned<CFDictionaryRef> attributesWith(CFStringRef key, CFTypeRef value) {
  const void* keys[] = {key};
  const void* values[] = {value};
  return Owned<CFDictionaryRef>(
      CFDictionaryCreate(nullptr, keys, values, 1, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

Owned<CFDictionaryRef> attributesFor(const audit_token_t& token, CFIndex length = sizeof(audit_token_t)) {
  std::array<UInt8, 64> bytes{};
  std::memcpy(bytes.data(), &token, sizeof token);
  const Owned<CFDataRef> data(CFDataCreate(nullptr, bytes.data(), length));
  return attributesWith(kSecGuestAttributeAudit, data.get());
}

struct Found {
  OSStatus status;
  Owned<SecCodeRef> code;
};

Found find(CFDictionaryRef attributes) {
  SecCodeRef code = nullptr;
  const OSStatus status = SecCodeCopyGuestWithAttributes(nullptr, attributes, kSecCSDefaultFlags, &code);
  return {status, Owned<SecCodeRef>(code)};
}

Owned<SecRequirementRef> compile(const char* text) {
  const Owned<CFStringRef> source(CFStringCreateWithCString(nullptr, text, kCFStringEncodingUTF8));
  SecRequirementRef requirement = nullptr;
  EXPECT_EQ(SecRequirementCreateWithString(source.get(), kSecCSDefaultFlags, &requirement), errSecSuccess);
  return Owned<SecRequirementRef>(requirement);
}

OSStatus validity(SecCodeRef code, const char* requirement = "identifier \"com.halvo.app\"") {
  return SecCodeCheckValidityWithErrors(code, kSecCSDefaultFlags, compile(requirement).get(), nullptr);
}

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
  EXPECT_EQ(CFGetTypeID(found.code.get()), SecCodeGetTypeID());
  EXPECT_EQ(validity(found.code.get()), errSecSuccess);
  EXPECT_EQ(validity(found.code.get(), "identifier \"com.halvo.other\""), errSecCSReqFailed);
}

TEST_F(CodeSigningTest, AnUnsignedProgramIsUnsignedWhateverIsRequired) {
  const RunningProgram program(makeProgram(std::nullopt));
  const Found found = find(attributesFor(tokenOf(program.pid())).get());

  EXPECT_EQ(validity(found.code.get(), "!identifier \"x\""), errSecCSUnsigned);
  EXPECT_EQ(SecCodeCheckValidity(found.code.get(), kSecCSDefaultFlags, nullptr), errSecCSUnsigned);
}

TEST_F(CodeSigningTest, AProcessNumberIsAnAttributeToo) {
  const RunningProgram program(makeProgram(kApp));
  const pid_t pid = program.pid();
  const Owned<CFNumberRef> number(CFNumberCreate(nullptr, kCFNumberIntType, &pid));

  const Found found = find(attributesWith(kSecGuestAttributePid, number.get()).get());

  ASSERT_EQ(found.status, errSecSuccess);
  EXPECT_EQ(validity(found.code.get()), errSecSuccess);
}

TEST_F(CodeSigningTest, AProgramWhoseFileWasRemovedIsStillItself) {
  const RunningProgram program(makeProgram(kApp));
  std::filesystem::remove(directory_.path() / "program");

  const Found found = find(attributesFor(tokenOf(program.pid())).get());

  ASSERT_EQ(found.status, errSecSuccess);
  EXPECT_EQ(validity(found.code.get()), errSecSuccess);
}

TEST_F(CodeSigningTest, AScriptCountsAsItsInterpreter) {
  const auto interpreter = makeProgram(CodeSignature{"com.apple.cat", "", "apple"});
  const auto script = directory_.write("script", "#!" + interpreter.string() + " -\n");
  std::filesystem::permissions(script, std::filesystem::perms::owner_all);
  ASSERT_TRUE(signExecutable(script, kApp));
  const RunningProgram program(script);

  const Found found = find(attributesFor(tokenOf(program.pid())).get());

  EXPECT_EQ(validity(found.code.get()), errSecCSReqFailed);
  EXPECT_EQ(validity(found.code.get(), "anchor apple"), errSecSuccess);
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
