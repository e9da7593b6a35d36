// What the authorization database says about the product's right, key by key, and the judgement on it. The input draws
// the entries of the dictionary that the database answers with.
#include <Security/Security.h>

#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "HalvoHelper/security/AdminRight.h"
#include "HalvoHelper/security/CFText.h"
#include "HalvoHelper/security/ScopedCF.h"
#include "fuzz/support/Input.h"
#include "fuzz/support/Require.h"
#include "fuzz/support/Target.h"
#include "sim/frameworks/testing/FrameworkProbe.h"

namespace halvo::fuzz {
namespace {

using Object = ScopedCF<CFTypeRef>;

// An object of the database, and what is to be read out of it: nothing for one that can be no key.
struct Drawn {
  Object object;
  AdminRightValue value;
};

Drawn drawnText(const std::string& text) {
  Object object(halvoCreateCFString(text).release());
  // Ill-formed text makes no object.
  if (!object) return {Object(CFRetain(kCFBooleanFalse)), false};
  return {std::move(object), text};
}

// Half of a surrogate pair: a string object without a UTF-8 form.
Drawn brokenText() {
  const UniChar half = 0xD83D;
  return {Object(CFStringCreateWithCharacters(kCFAllocatorDefault, &half, 1)), AdminRightOther{}};
}

template <typename Number>
Object numberObject(CFNumberType type, Number number) {
  return Object(CFNumberCreate(kCFAllocatorDefault, type, &number));
}

Drawn drawnWord(Input& input) {
  constexpr std::array<const char*, 8> kWords = {
      "class", "group", "authenticate-user", "allow-root", "shared", "session-owner", "user", "admin"};
  return drawnText(kWords[input.index(kWords.size())]);
}

Drawn drawnObject(Input& input) {
  switch (input.index(8)) {
    case 0:
      return {Object(CFRetain(kCFBooleanTrue)), true};
    case 1:
      return {Object(CFRetain(kCFBooleanFalse)), false};
    case 2: {
      const std::int64_t number = input.byte();
      return {numberObject(kCFNumberSInt64Type, number), number};
    }
    case 3:
      return {numberObject(kCFNumberDoubleType, 0.5), AdminRightOther{}};
    case 4:
      return {Object(CFDataCreate(kCFAllocatorDefault, nullptr, 0)), AdminRightOther{}};
    case 5:
      return drawnText(input.text());
    case 6:
      return brokenText();
    default:
      return drawnWord(input);
  }
}

struct Database {
  ScopedCF<CFMutableDictionaryRef> dictionary{CFDictionaryCreateMutable(
      kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks)};
  std::optional<AdminRightDefinition> definition = AdminRightDefinition();

  void set(const Drawn& key, const Drawn& value) {
    CFDictionarySetValue(dictionary.get(), key.object.get(), value.object.get());
    const auto* name = std::get_if<std::string>(&key.value);
    if (name == nullptr) {
      definition.reset();
    } else if (definition) {
      definition->insert_or_assign(*name, value.value);
    }
  }
};

void setSound(Database& database) {
  database.set(drawnText("class"), drawnText("user"));
  database.set(drawnText("group"), drawnText("admin"));
  database.set(drawnText("authenticate-user"), {Object(CFRetain(kCFBooleanTrue)), true});
  database.set(drawnText("allow-root"), {Object(CFRetain(kCFBooleanFalse)), false});
  database.set(drawnText("shared"), {Object(CFRetain(kCFBooleanFalse)), false});
}

Database databaseFrom(std::string_view bytes) {
  constexpr std::size_t kMostEntries = 32;
  Input input(bytes);
  Database database;
  if (input.flag()) setSound(database);
  for (std::size_t i = 0; i < kMostEntries && !input.empty(); ++i) {
    const Drawn key = input.byte() % 8 == 0 ? drawnObject(input) : drawnWord(input);
    database.set(key, drawnObject(input));
  }
  return database;
}

bool isSoundByTheRules(const AdminRightDefinition& definition) {
  const std::map<std::string, AdminRightValue> demanded = {{"class", std::string("user")},
                                                           {"group", std::string("admin")},
                                                           {"authenticate-user", true},
                                                           {"allow-root", false},
                                                           {"shared", false}};
  for (const auto& [key, value] : demanded) {
    if (!definition.contains(key) || definition.at(key) != value) return false;
  }
  return !definition.contains("session-owner") || definition.at("session-owner") != AdminRightValue(true);
}

void checkDefinition(const AdminRightDefinition& definition) {
  const bool isSound = halvoAdminRightIsSound(definition);
  require(isSound == isSoundByTheRules(definition), "sound is a right that demands an administrator");

  AdminRightDefinition longer = definition;
  longer.insert_or_assign("created", AdminRightOther{});
  longer.insert_or_assign("timeout", std::int64_t{0});
  require(halvoAdminRightIsSound(longer) == isSound, "other keys do not matter");
}

}  // namespace

void check(std::string_view bytes) {
  const auto before = sim::FrameworkProbe::liveObjects();
  {
    const Database database = databaseFrom(bytes);
    sim::FrameworkProbe probe;
    probe.returnNextRight(database.dictionary.get());

    const auto definition = halvoReadAdminRight();

    require(definition == database.definition, "every entry is read as what it is, or none is");
    if (definition) checkDefinition(*definition);
  }
  require(sim::FrameworkProbe::liveObjects() == before, "every object is released");
}

}  // namespace halvo::fuzz
