#include "HalvoHelper/security/AdminRight.h"

#include <Security/Security.h>

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "HalvoHelper/security/CFText.h"
#include "HalvoHelper/security/ScopedAuthorization.h"
#include "HalvoHelper/security/ScopedCF.h"
#include "HalvoHelper/text/Overloaded.h"
#include "HalvoHelperXPC/Constants.h"

namespace halvo {
namespace {

// What the system's prompt says.
constexpr std::string_view kPrompt = "Halvo wants to change its system audio components.";

template <typename T>
const T* valueOf(const AdminRightDefinition& definition, std::string_view key) {
  const auto found = definition.find(key);
  return found == definition.end() ? nullptr : std::get_if<T>(&found->second);
}

template <typename T>
bool holds(const AdminRightDefinition& definition, std::string_view key, const T& expected) {
  const T* value = valueOf<T>(definition, key);
  return value != nullptr && *value == expected;
}

void put(CFMutableDictionaryRef dictionary, const std::string& key, const AdminRightValue& value) {
  const ScopedCF<CFStringRef> name = halvoCreateCFString(key);
  std::visit(
      Overloaded{
          [](const AdminRightOther&) {},
          [&](bool flag) { CFDictionarySetValue(dictionary, name.get(), flag ? kCFBooleanTrue : kCFBooleanFalse); },
          [&](std::int64_t number) {
            const ScopedCF<CFNumberRef> object(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &number));
            CFDictionarySetValue(dictionary, name.get(), object.get());
          },
          [&](const std::string& text) {
            CFDictionarySetValue(dictionary, name.get(), halvoCreateCFString(text).get());
          }},
      value);
}

ScopedCF<CFMutableDictionaryRef> toDictionary(const AdminRightDefinition& definition) {
  ScopedCF<CFMutableDictionaryRef> dictionary(CFDictionaryCreateMutable(
      kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
  for (const auto& [key, value] : definition) put(dictionary.get(), key, value);
  return dictionary;
}

// A boolean is a boolean object only: the number 1 is not one, and the database does not take it for one either.
AdminRightValue toValue(CFTypeRef object) {
  const CFTypeID type = CFGetTypeID(object);
  if (type == CFBooleanGetTypeID()) return CFBooleanGetValue(static_cast<CFBooleanRef>(object)) != 0;
  if (type == CFNumberGetTypeID()) {
    std::int64_t number = 0;
    const auto source = static_cast<CFNumberRef>(object);
    if (CFNumberGetValue(source, kCFNumberSInt64Type, &number) != 0) return number;
    return AdminRightOther{};
  }
  if (auto text = halvoTextOf(object)) return std::move(*text);
  return AdminRightOther{};
}

std::optional<AdminRightDefinition> toDefinition(CFDictionaryRef dictionary) {
  const auto count = static_cast<std::size_t>(CFDictionaryGetCount(dictionary));
  std::vector<const void*> keys(count);
  std::vector<const void*> values(count);
  CFDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
  AdminRightDefinition definition;
  for (std::size_t i = 0; i < count; ++i) {
    auto key = halvoTextOf(keys[i]);
    if (!key) return std::nullopt;
    definition.insert_or_assign(std::move(*key), toValue(values[i]));
  }
  return definition;
}

}  // namespace

AdminRightDefinition halvoAdminRightDefinition() {
  return {
      {"class", std::string("user")}, {"group", std::string("admin")}, {"authenticate-user", true},
      {"allow-root", false},          {"session-owner", false},        {"shared", false},
      {"timeout", std::int64_t{300}}, {"version", std::int64_t{1}},
  };
}

bool halvoAdminRightIsSound(const AdminRightDefinition& definition) {
  if (!holds(definition, "class", std::string("user"))) return false;
  if (!holds(definition, "group", std::string("admin"))) return false;
  if (!holds(definition, "authenticate-user", true)) return false;
  if (!holds(definition, "allow-root", false)) return false;
  if (!holds(definition, "shared", false)) return false;
  // Absent means false to the database, so only a plain true makes the right weaker.
  return !holds(definition, "session-owner", true);
}

std::optional<AdminRightDefinition> halvoReadAdminRight() {
  const std::string name(kHalvoAdminRight);
  CFDictionaryRef found = nullptr;
  const OSStatus status = AuthorizationRightGet(name.c_str(), &found);
  const ScopedCF<CFDictionaryRef> dictionary(found);
  if (status != errAuthorizationSuccess || !dictionary) return std::nullopt;
  return toDefinition(dictionary.get());
}

std::int32_t halvoRegisterAdminRight() {
  AuthorizationRef created = nullptr;
  const OSStatus creation =
      AuthorizationCreate(nullptr, kAuthorizationEmptyEnvironment, kAuthorizationFlagDefaults, &created);
  const ScopedAuthorization reference(created);
  if (creation != errAuthorizationSuccess || !reference) return creation;

  const std::string name(kHalvoAdminRight);
  const ScopedCF<CFMutableDictionaryRef> definition = toDictionary(halvoAdminRightDefinition());
  const ScopedCF<CFStringRef> prompt = halvoCreateCFString(kPrompt);
  return AuthorizationRightSet(reference.get(), name.c_str(), definition.get(), prompt.get(), nullptr, nullptr);
}

}  // namespace halvo
