#include <Security/Authorization.h>

#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "sim/frameworks/corefoundation/Types.h"
#include "sim/frameworks/security/JSONObjects.h"
#include "sim/frameworks/security/RightStore.h"
#include "sim/frameworks/security/StateFiles.h"
#include "sim/frameworks/testing/Instrumentation.h"

using namespace halvo::sim;

namespace {

std::string describeName(const char* rightName) {
  return std::string("right=") + (rightName == nullptr ? "null" : rightName);
}

std::string describeText(CFStringRef text) {
  const auto value = textOf(text);
  return value ? quotedText(*value) : "null";
}

std::string describeSet(const char* rightName, CFTypeRef definition, CFStringRef prompt, CFBundleRef bundle,
                        CFStringRef table) {
  return describeName(rightName) + " prompt=" + describeText(prompt) +
         " bundle=" + (bundle == nullptr ? "null" : "given") + " table=" + describeText(table) +
         " definition=" + jsonFrom(definition).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

OSStatus setRight(const char* rightName, CFTypeRef rightDefinition, CFStringRef descriptionKey) {
  nlohmann::json definition = jsonFrom(rightDefinition);
  // A name alone stands for the right that decides instead.
  if (definition.is_string()) definition = {{"class", "rule"}, {"rule", std::move(definition)}};
  if (!definition.is_object()) return errAuthorizationInvalidPointer;
  if (const auto prompt = textOf(descriptionKey)) definition["default-prompt"][""] = *prompt;
  return writeRight(rightName, std::move(definition));
}

OSStatus getRight(const char* rightName, CFDictionaryRef* rightDefinition) {
  if (const auto fault = scriptedFault("right-get")) return *fault;
  if (rightName == nullptr) return errAuthorizationInvalidPointer;
  const auto stored = readRight(rightName);
  if (!stored) return errAuthorizationDenied;
  if (rightDefinition == nullptr) return errAuthorizationSuccess;
  *rightDefinition = static_cast<CFDictionaryRef>(objectFrom(rebuiltDefinition(*stored)).release());
  return errAuthorizationSuccess;
}

}  // namespace

extern "C" {

OSStatus AuthorizationRightGet(const char* rightName, CFDictionaryRef* rightDefinition) {
  const auto scripted = observe("AuthorizationRightGet", [&] { return describeName(rightName); });
  return perform(scripted, rightDefinition, [&] { return getRight(rightName, rightDefinition); });
}

OSStatus AuthorizationRightSet(AuthorizationRef authRef, const char* rightName, CFTypeRef rightDefinition,
                               CFStringRef descriptionKey, CFBundleRef bundle, CFStringRef localeTableName) {
  const auto scripted = observe("AuthorizationRightSet", [&] {
    return describeSet(rightName, rightDefinition, descriptionKey, bundle, localeTableName);
  });
  if (scripted) return scripted->status;
  if (const auto fault = scriptedFault("right-set")) return *fault;
  if (authRef == nullptr) return errAuthorizationInvalidRef;
  if (rightName == nullptr || rightDefinition == nullptr) return errAuthorizationInvalidPointer;
  return setRight(rightName, rightDefinition, descriptionKey);
}

}  // extern "C"
