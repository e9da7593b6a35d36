// Types, flags and statuses of code signing.
#pragma once

#include <CoreFoundation/CFBase.h>

typedef struct __SecCode* SecCodeRef;
typedef const struct __SecCode* SecStaticCodeRef;
typedef struct __SecRequirement* SecRequirementRef;

typedef uint32_t SecCSFlags;
enum : uint32_t {
  kSecCSDefaultFlags = 0,
  kSecCSConsiderExpiration = 1U << 31,
  kSecCSEnforceRevocationChecks = 1U << 30,
  kSecCSNoNetworkAccess = 1U << 29,
  kSecCSReportProgress = 1U << 28,
  kSecCSCheckTrustedAnchors = 1U << 27,
  kSecCSQuickCheck = 1U << 26,
  kSecCSApplyEmbeddedPolicy = 1U << 25,
  kSecCSStripDisallowedXattrs = 1U << 24,
  kSecCSMatchGuestRequirementInKernel = 1U << 23,
};

enum : OSStatus {
  errSecSuccess = 0,
  errSecUnimplemented = -4,
  errSecParam = -50,
  errSecAllocate = -108,
  errSecUserCanceled = -128,
};

enum : OSStatus {
  errSecCSUnimplemented = -67072,
  errSecCSInvalidObjectRef = -67071,
  errSecCSInvalidFlags = -67070,
  errSecCSObjectRequired = -67069,
  errSecCSStaticCodeNotFound = -67068,
  errSecCSUnsupportedGuestAttributes = -67067,
  errSecCSInvalidAttributeValues = -67066,
  errSecCSNoSuchCode = -67065,
  errSecCSMultipleGuests = -67064,
  errSecCSGuestInvalid = -67063,
  errSecCSUnsigned = -67062,
  errSecCSSignatureFailed = -67061,
  errSecCSSignatureNotVerifiable = -67060,
  errSecCSReqInvalid = -67052,
  errSecCSReqUnsupported = -67051,
  errSecCSReqFailed = -67050,
  errSecCSBadObjectFormat = -67049,
  errSecCSInternalError = -67048,
  errSecCSNotAHost = -67046,
  errSecCSStaticCodeChanged = -67034,
  errSecCSInfoPlistFailed = -67030,
  errSecCSSignatureUntrusted = -66996,
  errSecCSRevokedNotarization = -66992,
};
