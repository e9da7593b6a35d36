#include "HalvoHelper/security/PkgTrust.h"

#include <algorithm>
#include <cstddef>

#include "HalvoHelper/text/Text.h"

namespace halvo {
namespace {

// SHA-256 of Apple Root CA and of the two generations of Apple's Developer ID Certification Authority, in the form
// the report parser gives. Pinned, since a name in a report proves nothing.
constexpr std::string_view kROOT_CA = "B0B1730ECBC7FF4505142C49F1295E6EDA6BCAED7E2C68C5BE91B5A11001F024";
constexpr std::string_view kCA_G1 = "7AFC9D01A62F03A2DE9637936D4AFE68090D2DE18D03F29C88CFB0B1BA63587F";
constexpr std::string_view kCA_G2 = "F16CD3C54C7F83CEA4BF1A3E6A0819C8AAA8E4A1528FD144715F350643D2DF3A";

constexpr std::string_view kSignedStatus = "signed by a developer certificate issued by Apple for distribution";
constexpr std::string_view kNotarized = "trusted by the Apple notary service";
constexpr std::string_view kInstallerCN = "Developer ID Installer: ";

// What decides: leaf, intermediate and root. A fingerprint that goes on behind a pinned one differs from it by its next
// digit already, so that one more than those has to be kept.
constexpr HalvoPkgChainLimits kWhatDecides = {.certificates = 3, .digits = kROOT_CA.size() + 1};

bool contains(std::string_view text, std::string_view part) { return text.find(part) != std::string_view::npos; }

std::string orNone(const std::string& text) { return text.empty() ? "<none>" : text; }

// Leaf, intermediate and root are the first three of the chain, whatever numbers the report gave them.
HalvoPkgTrust checkChain(const std::vector<HalvoPkgCert>& chain, std::string_view teamID) {
  using enum HalvoPkgDistrust;
  const HalvoPkgCert& leaf = chain[0];
  const HalvoPkgCert& intermediate = chain[1];
  const HalvoPkgCert& root = chain[2];

  if (!leaf.commonName.starts_with(kInstallerCN)) return Distrusted{notDeveloperID, "leaf: " + leaf.commonName};
  if (!contains(leaf.commonName, "(" + std::string(teamID) + ")")) {
    return Distrusted{wrongTeam, "leaf: " + leaf.commonName};
  }
  if (intermediate.sha256 != kCA_G2 && intermediate.sha256 != kCA_G1) {
    return Distrusted{unknownAuthority, "intermediate: " + intermediate.commonName};
  }
  if (root.sha256 != kROOT_CA) return Distrusted{unknownAuthority, "root: " + root.commonName};
  return Trusted{leaf.commonName};
}

}  // namespace

std::optional<HalvoPkgDistrust> halvoPkgDistrustFromRawValue(std::string_view rawValue) {
  const auto found = std::ranges::find(kHalvoPkgDistrustRawValues, rawValue);
  if (found == kHalvoPkgDistrustRawValues.end()) return std::nullopt;
  return static_cast<HalvoPkgDistrust>(found - kHalvoPkgDistrustRawValues.begin());
}

HalvoPkgTrust halvoCheckPkgTrust(const HalvoPkgSignature& signature, std::string_view teamID) {
  using enum HalvoPkgDistrust;
  const auto& [status, notarization, chain] = signature;
  if (status.empty() || contains(halvoLowercasedASCII(status), "no signature")) {
    return Distrusted{unsigned_, "status: " + orNone(status)};
  }
  if (!contains(status, kSignedStatus)) return Distrusted{notDeveloperID, "status: " + status};
  if (!contains(notarization, kNotarized)) {
    return Distrusted{notNotarized, "notarization: " + orNone(notarization)};
  }
  if (chain.size() < kWhatDecides.certificates) {
    return Distrusted{chainTruncated, "chain has " + std::to_string(chain.size()) + " certificate(s)"};
  }
  return checkChain(chain, teamID);
}

HalvoPkgTrust halvoCheckPkgReport(std::string_view report, std::string_view teamID) {
  return halvoCheckPkgTrust(halvoParsePkgSignature(report, kWhatDecides), teamID);
}

}  // namespace halvo
