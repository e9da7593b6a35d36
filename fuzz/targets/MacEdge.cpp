// The checks of text and containers in front of the Mac's own readers: whatever form the bytes are taken for.
#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "HalvoHelper/security/CFText.h"
#include "HalvoHelper/text/Text.h"
#include "fuzz/support/Require.h"
#include "fuzz/support/Rules.h"
#include "fuzz/support/Target.h"
#include "platform/JSONObject.h"
#include "platform/PropertyList.h"
#include "platform/contract/PropertyLists.h"
#include "platform/contract/Repeated.h"
#include "platform/mac/JSONExactNumbers.h"
#include "platform/mac/JSONNesting.h"
#include "platform/mac/PropertyListContainers.h"
#include "platform/mac/PropertyListXML.h"
#include "platform/mac/UnicodeText.h"
#include "sim/frameworks/testing/FrameworkProbe.h"

namespace halvo::fuzz {
namespace {

// The well-formed sequences of UTF-8: how long they are, their first byte, and their second one. Any others are
// continuation bytes.
struct Sequences {
  std::size_t length;
  unsigned char first, lastFirst;
  unsigned char second = 0x80, lastSecond = 0xBF;
};

constexpr std::array<Sequences, 9> kSequences = {{{1, 0x00, 0x7F},
                                                  {2, 0xC2, 0xDF},
                                                  {3, 0xE0, 0xE0, 0xA0, 0xBF},
                                                  {3, 0xE1, 0xEC},
                                                  {3, 0xED, 0xED, 0x80, 0x9F},
                                                  {3, 0xEE, 0xEF},
                                                  {4, 0xF0, 0xF0, 0x90, 0xBF},
                                                  {4, 0xF1, 0xF3},
                                                  {4, 0xF4, 0xF4, 0x80, 0x8F}}};

bool isIn(char c, unsigned char first, unsigned char last) {
  const auto byte = static_cast<unsigned char>(c);
  return first <= byte && byte <= last;
}

bool begins(std::string_view text, const Sequences& row) {
  if (text.size() < row.length || !isIn(text[0], row.first, row.lastFirst)) return false;
  if (row.length > 1 && !isIn(text[1], row.second, row.lastSecond)) return false;
  return std::ranges::all_of(text.substr(0, row.length).substr(std::min<std::size_t>(2, row.length)),
                             [](char c) { return isIn(c, 0x80, 0xBF); });
}

bool isUTF8ByTheRules(std::string_view text) {
  while (!text.empty()) {
    const auto* const row = std::ranges::find_if(kSequences, [&](const Sequences& r) { return begins(text, r); });
    if (row == kSequences.end()) return false;
    text.remove_prefix(row->length);
  }
  return true;
}

void checkUnicode(std::string_view text) {
  const bool isWellFormed = isUTF8ByTheRules(text);
  const auto units = utf16FromUTF8(text);
  const std::string back = utf8FromUTF16(units);

  require(isWellFormedUTF8(text) == isWellFormed && (halvoLeadingUTF8(text) == text.size()) == isWellFormed,
          "both know UTF-8");
  require(units.size() <= text.size(), "a unit for each byte at most");
  require((back == text) == isWellFormed, "well-formed text comes back as it was, and no other");
  require(isUTF8ByTheRules(back), "what comes back is always UTF-8");
  require(utf16FromUTF8(back) == units, "what was converted is converted again");
}

void checkStringObjects(std::string_view text) {
  const ScopedCF<CFStringRef> string = halvoCreateCFString(text);
  require((string != nullptr) == isUTF8ByTheRules(text), "only UTF-8 makes a string object");
  require(!string || halvoTextOf(string.get()) == text, "the object holds the text");

  std::vector<std::uint16_t> units(text.size() / 2);
  if (!units.empty()) std::memcpy(units.data(), text.data(), 2 * units.size());
  const ScopedCF<CFStringRef> object(
      CFStringCreateWithCharacters(kCFAllocatorDefault, units.data(), static_cast<CFIndex>(units.size())));
  const std::string converted = utf8FromUTF16(units);
  const bool isPaired = utf16FromUTF8(converted) == units;
  require(halvoTextOf(object.get()) == (isPaired ? std::optional(converted) : std::nullopt), "whole or not at all");
}

void checkJSON(std::string_view text) {
  const auto object = halvoReadJSONObject(text);
  const std::string exact = withExactNumbers(text);

  require(!object || !jsonNestsTooDeep(text), "what the port's promise covers does not nest too deep");
  require(exact.size() <= 5 * text.size(), "9e18 is the number that grows most");
  require(withExactNumbers(exact) == exact, "numbers that are exact stay");
  require(halvoReadJSONObject(exact) == object, "no value changes");
  require(jsonNestsTooDeep(exact) == jsonNestsTooDeep(text), "no bracket changes");
}

void checkPropertyList(std::string_view text) {
  const bool isBinary = text.starts_with("bplist");
  const bool isSound = halvoReadPropertyList(std::as_bytes(std::span(text))).has_value();
  const std::string utf8 = utf8OfPropertyList(text);
  const bool isMarked = text.starts_with("\xFE\xFF") || text.starts_with("\xFF\xFE");

  require(isMarked ? isUTF8ByTheRules(utf8) : utf8 == text, "only UTF-16 is converted");
  require(!isSound || !isLaxPropertyListXML(utf8), "a strict reader's list is not lax");
  require(!isSound || !holdsTooManyContainers(utf8), "and holds no more than it may");
  require(!isSound || isBinary || isLaxPropertyListXML(utf8 + "x"), "text behind the end is lax");
  require(!isSound || isBinary || isLaxPropertyListXML(utf8 + "<dict/>"), "so is a second list");
}

// As many arrays and dictionaries, in a list of each form.
std::string xmlWith(std::size_t containers) {
  return xmlPropertyList("<dict><key>v</key><array>" + repeated("<array/>", static_cast<int>(containers) - 2) +
                         "</array></dict>");
}

std::string binaryWith(std::size_t containers) {
  return binaryDictionary("\x51v", "\xA0", std::vector<std::string>(containers - 2, "\xA0"));
}

// Lists around the bound, and what may stand beside the containers of the first.
void checkBound(std::string_view text) {
  constexpr std::size_t kFewest = 510;
  const std::size_t count = kFewest + static_cast<unsigned char>(text.front()) / 16 % 6;
  const bool changesNothing = text.find_first_of(std::string_view("<\0", 2)) == std::string_view::npos;

  require(holdsTooManyContainers(binaryWith(count)) == (count > 512), "512 containers in a binary list");
  require(!changesNothing || holdsTooManyContainers(xmlWith(count) + std::string(text)) == (count > 512), "in XML");
  const std::string brackets = repeated("[\"\\\"]\",", static_cast<int>(count));
  require(jsonNestsTooDeep(brackets) == (count > 512), "512 brackets");
}

}  // namespace

void check(std::string_view text) {
  const auto before = sim::FrameworkProbe::liveObjects();
  checkUnicode(text);
  checkStringObjects(text);
  checkJSON(text);
  checkPropertyList(text);
  if (!text.empty() && static_cast<unsigned char>(text.front()) % 16 == 7) checkBound(text);
  require(sim::FrameworkProbe::liveObjects() == before, "every object is released");
}

}  // namespace halvo::fuzz
