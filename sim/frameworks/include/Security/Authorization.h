// Authorization Services: rights that a user grants to a program and that another program can check, and the database
// that says what has to be fulfilled for a right. An AuthorizationRef is not a CoreFoundation object.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

typedef const struct AuthorizationOpaqueRef* AuthorizationRef;
typedef const char* AuthorizationString;

typedef UInt32 AuthorizationFlags;
enum : UInt32 {
  kAuthorizationFlagDefaults = 0,
  kAuthorizationFlagInteractionAllowed = 1U << 0,
  kAuthorizationFlagExtendRights = 1U << 1,
  kAuthorizationFlagDestroyRights = 1U << 3,
  kAuthorizationFlagPreAuthorize = 1U << 4,
};

enum : OSStatus {
  errAuthorizationSuccess = 0,
  errAuthorizationInvalidSet = -60001,
  errAuthorizationInvalidRef = -60002,
  errAuthorizationInvalidPointer = -60004,
  errAuthorizationDenied = -60005,
  errAuthorizationCanceled = -60006,
  errAuthorizationInteractionNotAllowed = -60007,
  errAuthorizationInternal = -60008,
  errAuthorizationExternalizeNotAllowed = -60009,
  errAuthorizationInvalidFlags = -60011,
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

typedef struct {
  char bytes[32];
} AuthorizationExternalForm;

#define kAuthorizationEmptyEnvironment NULL

extern "C" {

OSStatus AuthorizationCreate(const AuthorizationRights* rights, const AuthorizationEnvironment* environment,
                             AuthorizationFlags flags, AuthorizationRef* authorization);
OSStatus AuthorizationFree(AuthorizationRef authorization, AuthorizationFlags flags);
// Asking for the set of granted rights ends the process: nothing here frees one.
OSStatus AuthorizationCopyRights(AuthorizationRef authorization, const AuthorizationRights* rights,
                                 const AuthorizationEnvironment* environment, AuthorizationFlags flags,
                                 AuthorizationRights** authorizedRights);
OSStatus AuthorizationMakeExternalForm(AuthorizationRef authorization, AuthorizationExternalForm* extForm);
OSStatus AuthorizationCreateFromExternalForm(const AuthorizationExternalForm* extForm, AuthorizationRef* authorization);

// What is read back is rebuilt from the database and never equals what was written.
OSStatus AuthorizationRightGet(const char* rightName, CFDictionaryRef* rightDefinition);
OSStatus AuthorizationRightSet(AuthorizationRef authRef, const char* rightName, CFTypeRef rightDefinition,
                               CFStringRef descriptionKey, CFBundleRef bundle, CFStringRef localeTableName);

}  // extern "C"
