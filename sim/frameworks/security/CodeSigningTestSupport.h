// What the tests of code signing share: asking for a program and judging it, in one line each.
#pragma once

#include <Security/Security.h>
#include <gtest/gtest.h>
#include <mach/message.h>
#include <sys/types.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "HalvoHelper/security/ScopedCF.h"
#include "sim/frameworks/corefoundation/Types.h"
#include "sim/support/CodeSignature.h"
#include "sim/support/Processes.h"

namespace halvo::sim {

inline const CodeSignature kApp{"com.halvo.app", "QX4TRM2ZL9", "apple generic"};
inline constexpr OSStatus kNoSuchFile = 100000 + ENOENT;
inline constexpr OSStatus kNoSuchProcess = 100000 + ESRCH;

inline ScopedCF<CFStringRef> makeString(const char* text) { return ScopedCF<CFStringRef>(createString(text)); }

inline audit_token_t tokenOf(pid_t pid) {
  audit_token_t token{};
  token.val[5] = static_cast<unsigned>(pid);
  token.val[7] = processVersion(pid).value_or(0);
  return token;
}

inline ScopedCF<CFDictionaryRef> attributesWith(CFStringRef key, CFTypeRef value) {
  const void* keys[] = {key};
  const void* values[] = {value};
  return ScopedCF<CFDictionaryRef>(
      CFDictionaryCreate(nullptr, keys, values, 1, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

inline ScopedCF<CFDictionaryRef> attributesFor(const audit_token_t& token, CFIndex length = sizeof(audit_token_t)) {
  std::array<UInt8, 64> bytes{};
  std::memcpy(bytes.data(), &token, sizeof token);
  const ScopedCF<CFDataRef> data(CFDataCreate(nullptr, bytes.data(), length));
  return attributesWith(kSecGuestAttributeAudit, data.get());
}

struct Found {
  OSStatus status;
  ScopedCF<SecCodeRef> code;
};

inline Found find(CFDictionaryRef attributes) {
  SecCodeRef code = nullptr;
  const OSStatus status = SecCodeCopyGuestWithAttributes(nullptr, attributes, kSecCSDefaultFlags, &code);
  return {status, ScopedCF<SecCodeRef>(code)};
}

inline ScopedCF<SecRequirementRef> compile(const char* text) {
  const auto source = makeString(text);
  SecRequirementRef requirement = nullptr;
  EXPECT_EQ(SecRequirementCreateWithString(source.get(), kSecCSDefaultFlags, &requirement), errSecSuccess);
  return ScopedCF<SecRequirementRef>(requirement);
}

inline OSStatus validity(SecCodeRef code, const char* requirement = "identifier \"com.halvo.app\"") {
  return SecCodeCheckValidityWithErrors(code, kSecCSDefaultFlags, compile(requirement).get(), nullptr);
}

}  // namespace halvo::sim
