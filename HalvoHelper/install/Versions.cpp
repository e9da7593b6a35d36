#include "HalvoHelper/install/Versions.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "HalvoHelper/text/Text.h"
#include "platform/JSONObject.h"

namespace halvo {
namespace {

bool isDot(char32_t c) { return c == '.'; }

std::vector<std::int64_t> numbersOf(std::string_view version) {
  std::vector<std::int64_t> numbers;
  for (const std::string_view piece : halvoSplit(version, isDot)) {
    numbers.push_back(halvoParseDecimal(piece).value_or(0));
  }
  return numbers;
}

}  // namespace

ComparisonResult halvoCompareVersions(std::string_view a, std::string_view b) {
  std::vector<std::int64_t> left = numbersOf(a);
  std::vector<std::int64_t> right = numbersOf(b);
  const std::size_t count = std::max(left.size(), right.size());
  left.resize(count, 0);
  right.resize(count, 0);
  if (left < right) return ComparisonResult::orderedAscending;
  return right < left ? ComparisonResult::orderedDescending : ComparisonResult::orderedSame;
}

DowngradeDecision halvoDowngradeDecision(const std::optional<std::string>& installed, std::string_view incoming) {
  if (!installed || installed->empty()) return DowngradeDecision::install;
  const bool lower = halvoCompareVersions(incoming, *installed) == ComparisonResult::orderedAscending;
  return lower ? DowngradeDecision::refuse : DowngradeDecision::overwrite;
}

std::optional<std::string> halvoParseManifestDriverVersion(std::string_view manifestJSON) {
  // No JSON text holds a raw NUL, but a reader that stops there would see a shorter manifest than the caller sent.
  if (halvoHoldsNul(manifestJSON)) return std::nullopt;
  const auto manifest = halvoReadJSONObject(manifestJSON);
  if (!manifest) return std::nullopt;
  const auto found = manifest->find("driver_version");
  if (found == manifest->end()) return std::nullopt;
  const auto* version = std::get_if<std::string>(&found->second);
  return version == nullptr ? std::nullopt : std::optional(*version);
}

}  // namespace halvo
