// From the report that the package tool prints to the verdict.
#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "HalvoHelper/security/PkgTrust.h"
#include "HalvoHelper/security/PkgVerifier.h"
#include "fuzz/support/Require.h"
#include "fuzz/support/Rules.h"
#include "fuzz/support/Target.h"

namespace halvo::fuzz {
namespace {

constexpr std::array<std::string_view, 2> kTeams = {"QX4TRM2ZL9", "ABCDE12345"};
constexpr std::string_view kStatus = "signed by a developer certificate issued by Apple for distribution";
constexpr std::string_view kNotary = "trusted by the Apple notary service";
constexpr std::string_view kInstaller = "Developer ID Installer: ";
constexpr std::string_view kFirstCA = "7AFC9D01A62F03A2DE9637936D4AFE68090D2DE18D03F29C88CFB0B1BA63587F";
constexpr std::string_view kSecondCA = "F16CD3C54C7F83CEA4BF1A3E6A0819C8AAA8E4A1528FD144715F350643D2DF3A";
constexpr std::string_view kRootCA = "B0B1730ECBC7FF4505142C49F1295E6EDA6BCAED7E2C68C5BE91B5A11001F024";

std::string orNone(const std::string& text) { return text.empty() ? "<none>" : text; }

std::string lowerCase(std::string text) {
  for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
  return text;
}

struct Condition {
  bool holds;
  HalvoPkgDistrust reason;
  std::string detail;
};

// In the order in which they are asked.
std::vector<Condition> conditions(const HalvoPkgSignature& s, std::string_view team) {
  std::vector<HalvoPkgCert> chain = s.chain;
  chain.resize(std::max<std::size_t>(chain.size(), 3));
  const std::string& leaf = chain[0].commonName;
  const std::string& issuer = chain[1].sha256;
  using enum HalvoPkgDistrust;
  return {
      {!s.status.empty() && !contains(lowerCase(s.status), "no signature"), unsigned_, "status: " + orNone(s.status)},
      {contains(s.status, kStatus), notDeveloperID, "status: " + s.status},
      {contains(s.notarization, kNotary), notNotarized, "notarization: " + orNone(s.notarization)},
      {s.chain.size() >= 3, chainTruncated, "chain has " + std::to_string(s.chain.size()) + " certificate(s)"},
      {leaf.starts_with(kInstaller), notDeveloperID, "leaf: " + leaf},
      {contains(leaf, "(" + std::string(team) + ")"), wrongTeam, "leaf: " + leaf},
      {issuer == kFirstCA || issuer == kSecondCA, unknownAuthority, "intermediate: " + chain[1].commonName},
      {chain[2].sha256 == kRootCA, unknownAuthority, "root: " + chain[2].commonName},
  };
}

HalvoPkgTrust verdictByTheRules(const HalvoPkgSignature& signature, std::string_view team) {
  for (const Condition& condition : conditions(signature, team)) {
    if (!condition.holds) return Distrusted{condition.reason, condition.detail};
  }
  return Trusted{signature.chain.front().commonName};
}

// Whether the digits come in `text` in this order, whatever stands between them.
bool holdsDigits(std::string_view digits, std::string_view text) {
  for (const char c : text) {
    const char upper = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
    if (digits.starts_with(upper)) digits.remove_prefix(1);
  }
  return digits.empty();
}

// What the bare text must show for a package to be trusted, however it is read.
bool mayBeTrusted(std::string_view report, std::string_view team) {
  return contains(report, kStatus) && contains(report, kNotary) && contains(report, kInstaller) &&
         contains(report, "(" + std::string(team) + ")") && holdsDigits(kRootCA, report) &&
         (holdsDigits(kFirstCA, report) || holdsDigits(kSecondCA, report));
}

class ReportingRunner final : public ProcessRunner {
 public:
  explicit ReportingRunner(std::string report) : report_(std::move(report)) {}
  ProcessResult run(const std::string&, const std::vector<std::string>&) const override { return {3, report_}; }

 private:
  std::string report_;
};

void checkVerifier(std::string_view report, std::string_view team, const HalvoPkgTrust& verdict) {
  const auto runner = std::make_shared<ReportingRunner>(std::string(report));
  const bool isEmpty = pieces(report, whiteSpaceAt).empty();
  const HalvoPkgTrust unreadable = Distrusted{HalvoPkgDistrust::unreadable, "pkgutil rc=3, no output"};

  require(PkgVerifier(runner).verify("/a.pkg", team) == (isEmpty ? unreadable : verdict), "the report alone decides");
}

}  // namespace

void check(std::string_view report) {
  const HalvoPkgSignature signature = halvoParsePkgSignature(report);
  for (const std::string_view team : kTeams) {
    const HalvoPkgTrust verdict = halvoCheckPkgTrust(signature, team);

    require(verdict == verdictByTheRules(signature, team), "the first condition that fails names the reason");
    require(!std::holds_alternative<Trusted>(verdict) || mayBeTrusted(report, team), "nothing is trusted for less");
  }
  checkVerifier(report, kTeams[0], halvoCheckPkgTrust(signature, kTeams[0]));
}

}  // namespace halvo::fuzz
