#include "HalvoHelper/security/PkgSignature.h"

#include <optional>
#include <utility>

#include "HalvoHelper/text/Text.h"

namespace halvo {
namespace {

bool isHexDigit(char32_t c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

char upperHex(char32_t digit) { return static_cast<char>(digit >= 'a' ? digit - 'a' + 'A' : digit); }

// The digits of a line that holds hexadecimal digits and whitespace only; nothing for any other line. An empty line
// holds no digits, and that is fingerprint text too.
std::optional<std::string> fingerprintDigits(std::string_view line) {
  std::string digits;
  while (!line.empty()) {
    const CodePoint next = halvoFirstCodePoint(line);
    line = next.rest;
    if (isHexDigit(next.value)) {
      digits += upperHex(next.value);
    } else if (!halvoIsWhitespace(next.value)) {
      return std::nullopt;
    }
  }
  return digits;
}

struct CertificateLine {
  std::int64_t number;
  std::string_view commonName;
};

// "1. Developer ID Installer: ...": a number of at least 1, a dot, and something behind it.
std::optional<CertificateLine> certificateLine(std::string_view line) {
  const std::size_t dot = line.find('.');
  if (dot == std::string_view::npos || dot + 1 == line.size()) return std::nullopt;
  const auto number = halvoParseDecimal(line.substr(0, dot));
  if (!number || *number < 1) return std::nullopt;
  return CertificateLine{*number, halvoTrimBlanks(line.substr(dot + 1))};
}

// The text behind `key` if the line begins with it.
std::optional<std::string> valueAfter(std::string_view line, std::string_view key) {
  if (!line.starts_with(key)) return std::nullopt;
  return std::string(halvoTrimBlanks(line.substr(key.size())));
}

class ReportReader {
 public:
  // The rules are tried in this order and the first that fits has the line: a key line that carries a number and a
  // dot in front is a certificate line.
  void take(std::string_view line) {
    if (const auto certificate = certificateLine(line)) return begin(*certificate);
    if (auto status = valueAfter(line, "Status:")) return static_cast<void>(signature_.status = std::move(*status));
    if (auto notarization = valueAfter(line, "Notarization:")) {
      return static_cast<void>(signature_.notarization = std::move(*notarization));
    }
    if (line.starts_with("SHA256 Fingerprint:")) return static_cast<void>(inFingerprint_ = true);
    if (line.starts_with("Expires:")) return;
    if (line.starts_with("---")) return static_cast<void>(inFingerprint_ = false);
    if (inFingerprint_) takeFingerprint(line);
  }

  HalvoPkgSignature finish() && {
    finishCertificate();
    return std::move(signature_);
  }

 private:
  void begin(const CertificateLine& line) {
    finishCertificate();
    pending_.position = line.number - 1;
    pending_.commonName = line.commonName;
  }

  void takeFingerprint(std::string_view line) {
    const auto digits = fingerprintDigits(line);
    if (digits) {
      pending_.sha256 += *digits;
    } else {
      inFingerprint_ = false;
    }
  }

  // A certificate without a name is dropped; one without a fingerprint stays.
  void finishCertificate() {
    if (!pending_.commonName.empty()) signature_.chain.push_back(std::move(pending_));
    pending_ = {};
    inFingerprint_ = false;
  }

  HalvoPkgSignature signature_;
  HalvoPkgCert pending_;  // without a name until a certificate line came
  bool inFingerprint_ = false;
};

}  // namespace

HalvoPkgSignature halvoParsePkgSignature(std::string_view report) {
  ReportReader reader;
  while (true) {
    const std::size_t end = report.find('\n');
    reader.take(halvoTrimBlanks(report.substr(0, end)));
    if (end == std::string_view::npos) return std::move(reader).finish();
    report.remove_prefix(end + 1);
  }
}

}  // namespace halvo
