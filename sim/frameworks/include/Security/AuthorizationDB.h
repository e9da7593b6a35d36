// The authorization database: what has to be fulfilled for a right. What is read back is rebuilt from the database and
// never equals what was written.
#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <Security/Authorization.h>

extern "C" {

OSStatus AuthorizationRightGet(const char* rightName, CFDictionaryRef* rightDefinition);
OSStatus AuthorizationRightSet(AuthorizationRef authRef, const char* rightName, CFTypeRef rightDefinition,
                               CFStringRef descriptionKey, CFBundleRef bundle, CFStringRef localeTableName);
OSStatus AuthorizationRightRemove(AuthorizationRef authRef, const char* rightName);

}  // extern "C"
