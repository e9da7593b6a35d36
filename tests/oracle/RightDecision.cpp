// The right is judged as the helper does it at its start: from the dictionary that the authorization database returns.
#include <CoreFoundation/CoreFoundation.h>

#include <array>
#include <map>
#include <stdexcept>

#include "HalvoHelper/security/AdminRight.h"
#include "HalvoHelper/security/CFText.h"
#include "HalvoHelper/security/ScopedCF.h"
#include "sim/frameworks/testing/FrameworkProbe.h"
#include "tests/oracle/Decisions.h"

namespace halvo {
namespace {

using Object = ScopedCF<CFTypeRef>;

constexpr std::array kKeys = {"class", "group", "authenticate-user", "allow-root", "shared", "session-owner"};

Object real(double value) { return Object(CFNumberCreate(kCFAllocatorDefault, kCFNumberDoubleType, &value)); }

// Half of a pair of UTF-16 units, which no UTF-8 text can hold.
Object halfCharacter() {
  const UniChar unit = 0xD800;
  return Object(CFStringCreateWithCharacters(kCFAllocatorDefault, &unit, 1));
}

Object emptyDictionary() {
  return Object(CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks,
                                          &kCFTypeDictionaryValueCallBacks));
}

const std::map<std::string, Object (*)(), std::less<>> kObjects = {
    {"true", [] { return Object(CFRetain(kCFBooleanTrue)); }},
    {"false", [] { return Object(CFRetain(kCFBooleanFalse)); }},
    {"real-0", [] { return real(0.0); }},
    {"real-1", [] { return real(1.0); }},
    {"data", [] { return Object(CFDataCreate(kCFAllocatorDefault, nullptr, 0)); }},
    {"dictionary", emptyDictionary},
    {"half-character", halfCharacter},
};

Object objectOf(const std::string& word) {
  if (word.starts_with('=')) return Object(halvoCreateCFString(textOf(word)).release());
  if (const auto made = kObjects.find(word); made != kObjects.end()) return made->second();
  const std::int64_t number = numberOf(word);
  return Object(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &number));
}

void put(CFMutableDictionaryRef definition, const Object& key, const std::string& value) {
  if (value == "-") return;
  const Object object = objectOf(value);
  if (!key || !object) throw std::invalid_argument("no object for " + value);
  CFDictionarySetValue(definition, key.get(), object.get());
}

}  // namespace

Words decideRight(const Words& question) {
  const ScopedCF<CFMutableDictionaryRef> definition(CFDictionaryCreateMutable(
      kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
  for (std::size_t i = 0; i < kKeys.size(); ++i) {
    put(definition.get(), Object(halvoCreateCFString(kKeys[i]).release()), question.at(i));
  }
  for (std::size_t at = kKeys.size(); at < question.size(); at += 2) {
    put(definition.get(), objectOf(question.at(at)), question.at(at + 1));
  }

  sim::FrameworkProbe probe;
  probe.returnNextRight(definition.get());
  const auto read = halvoReadAdminRight();
  return {wordOfTruth(read && halvoAdminRightIsSound(*read))};
}

}  // namespace halvo
