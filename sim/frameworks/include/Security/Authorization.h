// Authorization Services: rights that a user grants to a program and that another program can check. Out-parameters
// are written on success only. An AuthorizationRef is not a CoreFoundation object.
#pragma once

#include <CoreFoundation/CFBase.h>

typedef const struct AuthorizationOpaqueRef* AuthorizationRef;
typedef const char* AuthorizationString;

typedef UInt32 AuthorizationFlags;
enum : UInt32 {
  kAuthorizationFlagDefaults = 0,
  kAuthorizationFlagInteractionAllowed = 1U << 0,
  kAuthorizationFlagExtendRights = 1U << 1,
  kAuthorizationFlagPartialRights = 1U << 2,
  kAuthorizationFlagDestroyRights = 1U << 3,
  kAuthorizationFlagPreAuthorize = 1U << 4,
  kAuthorizationFlagSkipInternalAuth = 1U << 9,
};

enum : UInt32 { kAuthorizationFlagCanNotPreAuthorize = 1U << 0 };

enum : OSStatus {
  errAuthorizationSuccess = 0,
  errAuthorizationInvalidSet = -60001,
  errAuthorizationInvalidRef = -60002,
  errAuthorizationInvalidTag = -60003,
  errAuthorizationInvalidPointer = -60004,
  errAuthorizationDenied = -60005,
  errAuthorizationCanceled = -60006,
  errAuthorizationInteractionNotAllowed = -60007,
  errAuthorizationInternal = -60008,
  errAuthorizationExternalizeNotAllowed = -60009,
  errAuthorizationInternalizeNotAllowed = -60010,
  errAuthorizationInvalidFlags = -60011,
  errAuthorizationToolExecuteFailure = -60031,
  errAuthorizationToolEnvironmentError = -60032,
  errAuthorizationBadAddress = -60033,
};

typedef struct {
  AuthorizationString name;
  size_t valueLength;
  void* value;
  UInt32 flags;
} AuthorizationItem;

typedef struct {
  UInt32 count;
  AuthorizationItem* items;
} AuthorizationItemSet;

typedef AuthorizationItemSet AuthorizationRights;
typedef AuthorizationItemSet AuthorizationEnvironment;

#define kAuthorizationExternalFormLength 32

typedef struct {
  char bytes[kAuthorizationExternalFormLength];
} AuthorizationExternalForm;

#define kAuthorizationEmptyEnvironment NULL

extern "C" {

OSStatus AuthorizationCreate(const AuthorizationRights* rights, const AuthorizationEnvironment* environment,
                             AuthorizationFlags flags, AuthorizationRef* authorization);
OSStatus AuthorizationFree(AuthorizationRef authorization, AuthorizationFlags flags);
OSStatus AuthorizationCopyRights(AuthorizationRef authorization, const AuthorizationRights* rights,
                                 const AuthorizationEnvironment* environment, AuthorizationFlags flags,
                                 AuthorizationRights** authorizedRights);
OSStatus AuthorizationMakeExternalForm(AuthorizationRef authorization, AuthorizationExternalForm* extForm);
OSStatus AuthorizationCreateFromExternalForm(const AuthorizationExternalForm* extForm, AuthorizationRef* authorization);
OSStatus AuthorizationFreeItemSet(AuthorizationItemSet* set);

}  // extern "C"
