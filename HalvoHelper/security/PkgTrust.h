// Decides whether a package is provably the maker's, from what its signature report says.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "HalvoHelper/security/PkgSignature.h"

namespace halvo {

// Why a package is refused; the raw value is what a client and the install log are told.
enum class HalvoPkgDistrust {
  unreadable,
  unsigned_,
  notNotarized,
  notDeveloperID,
  wrongTeam,
  chainTruncated,
  unknownAuthority,
  stagingFailed,
};

// The raw values in the order of the cases.
inline constexpr std::array<std::string_view, 8> kHalvoPkgDistrustRawValues = {
    "unreadable", "unsigned",        "not_notarized",     "not_developer_id",
    "wrong_team", "chain_truncated", "unknown_authority", "staging_failed",
};

[[nodiscard]] constexpr std::string_view halvoRawValue(HalvoPkgDistrust reason) {
  return kHalvoPkgDistrustRawValues[static_cast<std::size_t>(reason)];
}

// Nothing for any text but the eight raw values.
[[nodiscard]] std::optional<HalvoPkgDistrust> halvoPkgDistrustFromRawValue(std::string_view rawValue);

struct Trusted {
  std::string leafCommonName;
  bool operator==(const Trusted&) const = default;
};
struct Distrusted {
  HalvoPkgDistrust reason;
  std::string detail;  // one line for people
  bool operator==(const Distrusted&) const = default;
};
using HalvoPkgTrust = std::variant<Trusted, Distrusted>;

// Trusts a notarised Developer ID Installer signature of that team whose intermediate and root certificates carry the
// pinned fingerprints. The first check that fails, in a fixed order, names the reason. Pure.
[[nodiscard]] HalvoPkgTrust halvoCheckPkgTrust(const HalvoPkgSignature& signature, std::string_view teamID);

// The same of a whole report, however many certificates and digits are in it: memory for those that decide only.
[[nodiscard]] HalvoPkgTrust halvoCheckPkgReport(std::string_view report, std::string_view teamID);

}  // namespace halvo
