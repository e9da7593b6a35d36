// The installed driver's property list, from its file to the version.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "HalvoHelper/text/Text.h"
#include "fuzz/support/MemoryFile.h"
#include "fuzz/support/Require.h"
#include "fuzz/support/Target.h"
#include "main/InstalledDriver.h"
#include "platform/PropertyList.h"
#include "platform/contract/PropertyLists.h"
#include "platform/mac/UnicodeText.h"

namespace halvo::fuzz {
namespace {

constexpr const char* kKey = "CFBundleVersion";

std::optional<PropertyList> listIn(std::string_view bytes) {
  return halvoReadPropertyList(std::as_bytes(std::span(bytes)));
}

// What the port reads under the key.
std::optional<std::string> versionInList(std::string_view bytes) {
  const auto list = listIn(bytes);
  if (!list || !list->contains(kKey)) return std::nullopt;
  const auto* version = std::get_if<std::string>(&list->at(kKey));
  return version == nullptr ? std::nullopt : std::optional(*version);
}

// Binary lists keep any text, as big-endian UTF-16.
std::string binaryWith(std::string_view version) {
  std::string text;
  const auto units = utf16FromUTF8(version);
  for (const std::uint16_t unit : units) text += bigEndian(unit, 2);
  return binaryDictionary("\x5F\x10\x0F" + std::string(kKey), "\x6F\x12" + bigEndian(units.size(), 4) + text);
}

std::string xmlWith(std::string_view version) {
  std::string text;
  for (const char c : version) text += "&#" + std::to_string(static_cast<int>(c)) + ";";
  return xmlPropertyList("<dict><key>" + std::string(kKey) + "</key><string>" + text + "</string></dict>");
}

// XML holds no control characters, not even by their numbers.
bool isPrintable(std::string_view text) {
  for (const char c : text) {
    if (c < 0x20 || c > 0x7E) return false;
  }
  return true;
}

void checkVersion(std::string_view bytes, const std::string& version) {
  require(version.size() <= 2 * bytes.size(), "no more text than UTF-16 grows to in UTF-8");
  require(halvoLeadingUTF8(version) == version.size(), "the version is UTF-8");
  require(versionInList(binaryWith(version)) == version, "what was read is read again from a binary list");
  require(!isPrintable(version) || versionInList(xmlWith(version)) == version, "and from XML");
}

}  // namespace

void check(std::string_view bytes) {
  static const MemoryFile file;
  file.write(bytes);

  const auto version = halvoInstalledDriverVersion(file.path());

  require(version == versionInList(bytes), "the version is the text under the bundle's version key");
  const auto list = listIn(bytes);
  require(!list || list->size() <= bytes.size(), "no more entries than bytes");
  if (version) checkVersion(bytes, *version);
}

}  // namespace halvo::fuzz
