#include "HalvoHelper/security/PkgSignature.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

#include "HalvoHelper/text/Text.h"

namespace halvo {
namespace {

struct CertificateLine {
  std::int64_t number;
  std::string_view commonName;
};

bool canBeInNumber(char c) { return (c >= '0' && c <= '9') || c == '+'; }

// "1. Developer ID Installer: ...": a number of at least 1, a dot, and something behind it.
std::optional<CertificateLine> certificateLine(std::string_view line) {
  const auto dot = std::ranges::find_if_not(line, canBeInNumber);
  if (dot == line.end() || *dot != '.' || dot + 1 == line.end()) return std::nullopt;
  const auto number = halvoParseDecimal({line.begin(), dot});
  if (!number || *number < 1) return std::nullopt;
  return CertificateLine{*number, halvoTrimBlanks({dot + 1, line.end()})};
}

// The text behind `key` if the line begins with it.
std::optional<std::string_view> valueAfter(std::string_view line, std::string_view key) {
  if (!line.starts_with(key)) return std::nullopt;
  return halvoTrimBlanks(line.substr(key.size()));
}

class ReportReader {
 public:
  explicit ReportReader(const HalvoPkgChainLimits& limits) : limits_(limits) {}

  // The rules are tried in this order and the first that fits has the line: a key line that carries a number and a
  // dot in front is a certificate line.
  void take(std::string_view line) {
    if (const auto certificate = certificateLine(line)) return begin(*certificate);
    if (const auto status = valueAfter(line, "Status:")) return static_cast<void>(signature_.status = *status);
    if (const auto notarization = valueAfter(line, "Notarization:")) {
      return static_cast<void>(signature_.notarization = *notarization);
    }
    if (line.starts_with("SHA256 Fingerprint:")) return static_cast<void>(inFingerprint_ = true);
    if (line.starts_with("Expires:")) return;
    if (line.starts_with("---")) return static_cast<void>(inFingerprint_ = false);
    if (takesDigits()) inFingerprint_ = halvoAppendHexDigits(pending_.sha256, line, limits_.digits);
  }

  HalvoPkgSignature finish() && {
    finishCertificate();
    return std::move(signature_);
  }

 private:
  void begin(const CertificateLine& line) {
    finishCertificate();
    if (signature_.chain.size() >= limits_.certificates) return;
    pending_.position = line.number - 1;
    pending_.commonName = line.commonName;
  }

  // A certificate without a name is dropped; one without a fingerprint stays.
  void finishCertificate() {
    if (!pending_.commonName.empty()) signature_.chain.push_back(std::move(pending_));
    pending_ = {};
    inFingerprint_ = false;
  }

  // What would not be kept is not read: a fingerprint that is full stays as it is until the next certificate.
  [[nodiscard]] bool takesDigits() const {
    return inFingerprint_ && !pending_.commonName.empty() && pending_.sha256.size() < limits_.digits;
  }

  HalvoPkgChainLimits limits_;
  HalvoPkgSignature signature_;
  HalvoPkgCert pending_;  // without a name until a certificate line came
  bool inFingerprint_ = false;
};

}  // namespace

HalvoPkgSignature halvoParsePkgSignature(std::string_view report, const HalvoPkgChainLimits& limits) {
  ReportReader reader(limits);
  while (true) {
    const std::size_t end = report.find('\n');
    reader.take(halvoTrimBlanks(report.substr(0, end)));
    if (end == std::string_view::npos) return std::move(reader).finish();
    report.remove_prefix(end + 1);
  }
}

}  // namespace halvo
