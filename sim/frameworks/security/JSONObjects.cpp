#include "sim/frameworks/security/JSONObjects.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

#include "sim/frameworks/corefoundation/Types.h"

namespace halvo::sim {
namespace {

nlohmann::json jsonFromDictionary(const __CFDictionary& dictionary) {
  auto json = nlohmann::json::object();
  for (const auto& [key, value] : dictionary.entries) {
    if (const auto name = textOf(key)) json[*name] = jsonFrom(value);
  }
  return json;
}

OwnedObject dictionaryFrom(const nlohmann::json& json) {
  auto* dictionary = new __CFDictionary(&kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks, false);
  OwnedObject owner(dictionary);
  for (const auto& [name, member] : json.items()) {
    const OwnedObject key(createString(name));
    const OwnedObject value = objectFrom(member);
    if (key && value) dictionary->set(key.get(), value.get());
  }
  return owner;
}

}  // namespace

nlohmann::json jsonFrom(CFTypeRef object) {
  if (const auto text = textOf(object)) return *text;
  if (const auto* boolean = objectAs<__CFBoolean>(object, kBooleanType)) return boolean->value;
  if (const auto* number = objectAs<__CFNumber>(object, kNumberType)) {
    return std::visit([](auto value) { return nlohmann::json(value); }, number->value);
  }
  if (const auto* dictionary = objectAs<__CFDictionary>(object, kDictionaryType))
    return jsonFromDictionary(*dictionary);
  return nullptr;
}

OwnedObject objectFrom(const nlohmann::json& json) {
  if (json.is_string()) return OwnedObject(createString(json.get_ref<const std::string&>()));
  if (json.is_boolean()) {
    return OwnedObject(json.get<bool>() ? kCFBooleanTrue : kCFBooleanFalse);
  }
  if (json.is_number_integer()) return OwnedObject(new __CFNumber(json.get<std::int64_t>()));
  if (json.is_number_float()) return OwnedObject(new __CFNumber(json.get<double>()));
  if (json.is_object()) return dictionaryFrom(json);
  return nullptr;
}

}  // namespace halvo::sim
