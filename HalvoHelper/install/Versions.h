// How driver versions compare, and the rule that an install never lowers the installed one. Pure functions.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace halvo {

enum class ComparisonResult : std::int8_t {
  orderedAscending = -1,  // the first argument is lower
  orderedSame = 0,
  orderedDescending = 1,
};

// Compares dotted numbers piece by piece; missing pieces and pieces that are no number of 64 bits count as 0.
[[nodiscard]] ComparisonResult halvoCompareVersions(std::string_view a, std::string_view b);

enum class DowngradeDecision {
  install,    // nothing usable is installed
  overwrite,  // the same version or a newer one comes in
  refuse,     // an older one comes in
};

[[nodiscard]] DowngradeDecision halvoDowngradeDecision(const std::optional<std::string>& installed,
                                                       std::string_view incoming);

// The text under "driver_version" of a package manifest, as it stands; nothing when the manifest is not a JSON object
// or holds no such text. The manifest is the client's word only and proves nothing about the package.
[[nodiscard]] std::optional<std::string> halvoParseManifestDriverVersion(std::string_view manifestJSON);

}  // namespace halvo
