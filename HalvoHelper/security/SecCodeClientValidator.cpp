#include "HalvoHelper/security/SecCodeClientValidator.h"

#include <array>
#include <cstring>
#include <utility>

#include "HalvoHelper/security/CFText.h"

namespace halvo {
namespace {

ScopedCF<SecRequirementRef> compile(const std::string& text) {
  const ScopedCF<CFStringRef> source = halvoCreateCFString(text);
  if (!source) return nullptr;
  // The status is not looked at: a text that does not compile leaves `requirement` empty, and that refuses everybody.
  SecRequirementRef requirement = nullptr;
  static_cast<void>(SecRequirementCreateWithString(source.get(), kSecCSDefaultFlags, &requirement));
  return ScopedCF<SecRequirementRef>(requirement);
}

// The look-up key for the process behind the token. The token and not the process number: the kernel gives the number
// of a client that has exited to somebody else, but never its token.
ScopedCF<CFDictionaryRef> guestAttributes(const audit_token_t& token) {
  std::array<UInt8, sizeof(audit_token_t)> bytes{};
  std::memcpy(bytes.data(), &token, bytes.size());
  const ScopedCF<CFDataRef> data(CFDataCreate(kCFAllocatorDefault, bytes.data(), bytes.size()));
  if (!data) return nullptr;
  std::array<const void*, 1> keys = {kSecGuestAttributeAudit};
  std::array<const void*, 1> values = {data.get()};
  return ScopedCF<CFDictionaryRef>(CFDictionaryCreate(kCFAllocatorDefault, keys.data(), values.data(), 1,
                                                      &kCFTypeDictionaryKeyCallBacks,
                                                      &kCFTypeDictionaryValueCallBacks));
}

}  // namespace

std::string halvoClientCodeRequirement(std::string_view teamID, std::string_view appIdentifier) {
  std::string text = "identifier \"";
  text += appIdentifier;
  text += "\" and anchor apple generic and ";
  text += "certificate leaf[subject.OU] = \"";
  text += teamID;
  text += "\"";
  return text;
}

SecCodeClientValidator::SecCodeClientValidator(const std::string& requirement, LogFunction log)
    : requirement_(compile(requirement)), log_(std::move(log)) {}

bool SecCodeClientValidator::isAuthorized(const audit_token_t& auditToken) const {
  if (!requirement_) return false;
  const ScopedCF<CFDictionaryRef> attributes = guestAttributes(auditToken);
  // Without attributes the look-up would answer with the kernel's own code instead of failing.
  if (!attributes) return false;

  SecCodeRef found = nullptr;
  const OSStatus lookup = SecCodeCopyGuestWithAttributes(nullptr, attributes.get(), kSecCSDefaultFlags, &found);
  const ScopedCF<SecCodeRef> guest(found);
  if (lookup != errSecSuccess || !guest) {
    log_("halvo-helper: client look-up failed status=" + std::to_string(lookup));
    return false;
  }

  const OSStatus validity =
      SecCodeCheckValidityWithErrors(guest.get(), kSecCSDefaultFlags, requirement_.get(), nullptr);
  if (validity != errSecSuccess) log_("halvo-helper: client signature refused status=" + std::to_string(validity));
  return validity == errSecSuccess;
}

}  // namespace halvo
