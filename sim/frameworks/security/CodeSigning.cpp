#include <Security/Security.h>
#include <mach/message.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

#include "sim/frameworks/corefoundation/Types.h"
#include "sim/frameworks/security/Guest.h"
#include "sim/frameworks/security/Requirement.h"
#include "sim/frameworks/testing/Instrumentation.h"

using namespace halvo::sim;

struct __SecCode : CFObject {
  explicit __SecCode(Guest program) : CFObject(kCodeType), guest(std::move(program)) {}
  const Guest guest;
};

struct __SecRequirement : CFObject {
  __SecRequirement(std::string source, Requirement compiled)
      : CFObject(kRequirementType), text(std::move(source)), requirement(std::move(compiled)) {}
  const std::string text;
  const Requirement requirement;
};

namespace {

constexpr OSStatus kNoSuchProcess = 100000 + ESRCH;

Constant<__CFString> auditKey(u"audit");

// Answers for the whole dictionary: a status, or the program it names.
GuestLookup findByAuditToken(CFTypeRef value) {
  const auto* data = objectAs<__CFData>(value, kDataType);
  audit_token_t token{};
  if (data == nullptr || data->bytes.size() != sizeof token) return {errSecCSInvalidAttributeValues, {}};
  std::memcpy(&token, data->bytes.data(), sizeof token);
  return findGuest(static_cast<pid_t>(token.val[5]), token.val[7]);
}

const void* valueOf(CFDictionaryRef dictionary, CFStringRef key) {
  const void* const* value = dictionary == nullptr ? nullptr : dictionary->find(key);
  return value == nullptr ? nullptr : *value;
}

GuestLookup findByAttributes(CFDictionaryRef attributes) {
  if (attributes == nullptr || CFDictionaryGetCount(attributes) == 0) return {errSecSuccess, {}};
  const void* token = valueOf(attributes, kSecGuestAttributeAudit);
  return token == nullptr ? GuestLookup{errSecCSUnsupportedGuestAttributes, {}} : findByAuditToken(token);
}

std::string describeLookup(SecCodeRef host, CFDictionaryRef attributes, SecCSFlags flags) {
  std::string text = std::string("host=") + (host == nullptr ? "null" : "code") + " flags=" + std::to_string(flags);
  const auto* data = objectAs<__CFData>(valueOf(attributes, kSecGuestAttributeAudit), kDataType);
  return data == nullptr ? text : text + " audit=" + hexText(data->bytes.data(), data->bytes.size());
}

std::string describeCheck(SecCSFlags flags, SecRequirementRef requirement, const CFErrorRef* errors) {
  const auto* object = objectAs<__SecRequirement>(requirement, kRequirementType);
  return "flags=" + std::to_string(flags) + " requirement=" + (object == nullptr ? "null" : quotedText(object->text)) +
         (errors == nullptr ? "" : " errors=asked");
}

OSStatus copyGuest(SecCodeRef host, CFDictionaryRef attributes, SecCSFlags flags, SecCodeRef* guest) {
  if (guest == nullptr) return errSecCSObjectRequired;
  if (flags != kSecCSDefaultFlags) return errSecCSInvalidFlags;
  // Only the kernel hosts other programs here.
  const auto* hostCode = objectAs<__SecCode>(host, kCodeType);
  if (host != nullptr && (hostCode == nullptr || hostCode->guest.process)) return errSecCSNotAHost;
  GuestLookup found = findByAttributes(attributes);
  if (found.status == errSecSuccess) *guest = new __SecCode(std::move(found.guest));
  return found.status;
}

OSStatus judge(const Guest& guest, const Requirement& requirement) {
  if (!guestStillRuns(guest)) return kNoSuchProcess;
  if (guest.process && !guest.signature) return errSecCSUnsigned;
  if (!guest.intact) return errSecCSSignatureFailed;
  if (guest.replaced) return errSecCSStaticCodeChanged;
  if (!requirement) return errSecSuccess;
  // The kernel is valid code, but signed by nobody whom a requirement could name.
  if (!guest.process || !requirement(*guest.signature)) return errSecCSReqFailed;
  return errSecSuccess;
}

OSStatus check(SecCodeRef code, SecCSFlags flags, SecRequirementRef requirement) {
  if (code == nullptr) return errSecCSObjectRequired;
  if (flags != kSecCSDefaultFlags) return errSecCSInvalidFlags;
  const auto* program = objectAs<__SecCode>(code, kCodeType);
  const auto* condition = objectAs<__SecRequirement>(requirement, kRequirementType);
  if (program == nullptr || (requirement != nullptr && condition == nullptr)) return errSecCSInvalidObjectRef;
  return judge(program->guest, condition == nullptr ? Requirement() : condition->requirement);
}

}  // namespace

extern "C" {

const CFStringRef kSecGuestAttributeAudit = &auditKey.object;

OSStatus SecRequirementCreateWithString(CFStringRef text, SecCSFlags flags, SecRequirementRef* requirement) {
  const auto source = textOf(text);
  const auto scripted = observe("SecRequirementCreateWithString", [&] {
    return "flags=" + std::to_string(flags) + " text=" + (source ? quotedText(*source) : "null");
  });
  if (scripted) return scripted->store(requirement);
  if (text == nullptr || requirement == nullptr) return errSecCSObjectRequired;
  if (flags != kSecCSDefaultFlags) return errSecCSInvalidFlags;
  if (!source) return errSecCSInvalidObjectRef;
  Requirement compiled = compileRequirement(*source);
  if (!compiled) return errSecCSReqInvalid;
  *requirement = new __SecRequirement(*source, std::move(compiled));
  return errSecSuccess;
}

OSStatus SecCodeCopyGuestWithAttributes(SecCodeRef host, CFDictionaryRef attributes, SecCSFlags flags,
                                        SecCodeRef* guest) {
  const auto scripted =
      observe("SecCodeCopyGuestWithAttributes", [&] { return describeLookup(host, attributes, flags); });
  return perform(scripted, guest, [&] { return copyGuest(host, attributes, flags, guest); });
}

OSStatus SecCodeCheckValidityWithErrors(SecCodeRef code, SecCSFlags flags, SecRequirementRef requirement,
                                        CFErrorRef* errors) {
  const auto scripted =
      observe("SecCodeCheckValidityWithErrors", [&] { return describeCheck(flags, requirement, errors); });
  return scripted ? scripted->status : check(code, flags, requirement);
}

}  // extern "C"
