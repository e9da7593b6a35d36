#include "client/doctor/PartsCollector.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <span>
#include <utility>
#include <variant>

#include "HalvoHelper/system/ProductPaths.h"
#include "client/doctor/ShortText.h"
#include "platform/PropertyList.h"

namespace halvo {
namespace {

constexpr std::size_t kLongestVersion = 40;
constexpr std::size_t kLongestPropertyList = std::size_t{1024} * 1024;

constexpr unsigned kProgram = 0755;
constexpr unsigned kText = 0644;
constexpr const char* kInfo = "Contents/Info.plist";
constexpr const char* kDriverVersionKey = "CFBundleVersion";

constexpr std::array<PartRule, 6> kRules = {{
    {kApplicationPath, ItemKind::folder, kProgram, false, kInfo, "CFBundleShortVersionString"},
    {kDriverBundlePath, ItemKind::folder, kProgram, true, kInfo, kDriverVersionKey},
    {kBrokerPath, ItemKind::file, kProgram, true, nullptr, nullptr},
    {kBrokerPlistPath, ItemKind::file, kText, true, nullptr, nullptr},
    {kDaemonPlistPath, ItemKind::file, kText, true, nullptr, nullptr},
    {kPackageReceiptPath, ItemKind::file, kText, false, "", "PackageVersion"},
}};

Part collectPart(const Disk& disk, const PartRule& rule) {
  Part part{.rule = rule, .item = disk.look(rule.path), .version = {}};
  if (part.item.kind != rule.kind || rule.versionFile == nullptr) return part;
  auto [sight, text] = readVersion(disk, rule.path, rule.versionFile, rule.versionKey);
  part.versionSight = sight;
  part.version = std::move(text);
  return part;
}

}  // namespace

VersionText readVersion(const Disk& disk, const std::string& path, std::string_view below, std::string_view key) {
  const Contents contents = disk.head(path, below, kLongestPropertyList);
  if (contents.sight == Sight::unreadable) return {Sight::unreadable, {}};
  const auto list = halvoReadPropertyList(std::as_bytes(std::span(contents.bytes)));
  if (!list) return {};
  const auto found = list->find(key);
  const auto* text = found == list->end() ? nullptr : std::get_if<std::string>(&found->second);
  if (text == nullptr) return {};
  return {Sight::present, shortened(*text, kLongestVersion)};
}

VersionText readDriverVersion(const Disk& disk, const std::string& bundle) {
  return readVersion(disk, bundle, kInfo, kDriverVersionKey);
}

std::vector<Part> collectParts(const Disk& disk) {
  std::vector<Part> parts;
  std::ranges::transform(kRules, std::back_inserter(parts),
                         [&](const PartRule& rule) { return collectPart(disk, rule); });
  return parts;
}

}  // namespace halvo
