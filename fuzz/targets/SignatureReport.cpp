// The package tool's report about a signature.
#include <algorithm>
#include <numeric>
#include <string>
#include <utility>

#include "HalvoHelper/security/PkgSignature.h"
#include "fuzz/support/Require.h"
#include "fuzz/support/Rules.h"
#include "fuzz/support/Target.h"

namespace halvo::fuzz {
namespace {

constexpr std::string_view kDigits = "0123456789ABCDEFabcdef";

// The digits of a line that is pure fingerprint text.
std::optional<std::string> digitsOf(std::string_view line) {
  std::string digits;
  for (const std::string& word : pieces(line, whiteSpaceAt)) digits += word;
  if (digits.find_first_not_of(kDigits) != std::string::npos) return std::nullopt;
  for (char& digit : digits) digit = digit >= 'a' ? static_cast<char>(digit - 32) : digit;
  return digits;
}

bool isCertificateLine(const std::string& line) {
  const std::size_t dot = line.find('.');
  return dot != std::string::npos && dot + 1 < line.size() && decimal(line.substr(0, dot)).value_or(0) >= 1;
}

HalvoPkgCert certificateOf(const std::string& line) {
  const std::size_t dot = line.find('.');
  return {*decimal(line.substr(0, dot)) - 1, trimmed(line.substr(dot + 1)), ""};
}

// Everything up to the next certificate line belongs to the one before.
HalvoPkgSignature signatureByTheRules(std::string_view report) {
  HalvoPkgSignature signature;
  HalvoPkgCert nobody;
  HalvoPkgCert* current = &nobody;
  bool takesDigits = false;
  for (const std::string& piece : allPieces(report, lineFeedAt)) {
    const std::string line = trimmed(piece);
    if (isCertificateLine(line)) {
      signature.chain.push_back(certificateOf(line));
      current = &signature.chain.back();
      takesDigits = false;
    } else if (line.starts_with("Status:")) {
      signature.status = trimmed(line.substr(7));
    } else if (line.starts_with("Notarization:")) {
      signature.notarization = trimmed(line.substr(13));
    } else if (line.starts_with("SHA256 Fingerprint:")) {
      takesDigits = true;
    } else if (line.starts_with("---")) {
      takesDigits = false;
    } else if (takesDigits && !line.starts_with("Expires:")) {
      const auto digits = digitsOf(line);
      takesDigits = digits.has_value();
      current->sha256 += digits.value_or("");
    }
  }
  std::erase_if(signature.chain, [](const HalvoPkgCert& certificate) { return certificate.commonName.empty(); });
  return signature;
}

// A report that says just this.
std::string reportOf(const HalvoPkgSignature& signature) {
  std::string report = "Status: " + signature.status + "\nNotarization: " + signature.notarization + "\n";
  for (const HalvoPkgCert& certificate : signature.chain) {
    const std::string number = std::to_string(certificate.position + 1);
    report += number + ". " + certificate.commonName + "\nSHA256 Fingerprint:\n" + certificate.sha256 + "\n";
  }
  return report;
}

bool isOneTrimmedLine(const std::string& text) { return text == trimmed(text) && !contains(text, "\n"); }

bool isPlausible(const HalvoPkgCert& certificate) {
  return certificate.position >= 0 && !certificate.commonName.empty() && isOneTrimmedLine(certificate.commonName) &&
         certificate.sha256.find_first_not_of("0123456789ABCDEF") == std::string::npos;
}

std::size_t sizeOf(const HalvoPkgSignature& signature) {
  return std::accumulate(signature.chain.begin(), signature.chain.end(),
                         signature.status.size() + signature.notarization.size(),
                         [](std::size_t sum, const HalvoPkgCert& certificate) {
                           return sum + certificate.commonName.size() + certificate.sha256.size();
                         });
}

}  // namespace

void check(std::string_view report) {
  const HalvoPkgSignature signature = halvoParsePkgSignature(report);

  require(signature == signatureByTheRules(report), "the report is read as the rules say");
  require(sizeOf(signature) <= report.size(), "no more text than the report has");
  require(std::ranges::all_of(signature.chain, isPlausible), "names are trimmed, digits are upper case");
  require(isOneTrimmedLine(signature.status) && isOneTrimmedLine(signature.notarization), "values are trimmed lines");
  require(halvoParsePkgSignature(reportOf(signature)) == signature, "what was read is read again");
  require(halvoParsePkgSignature("\t " + std::string(report) + " ") == signature, "indentation does not matter");
}

}  // namespace halvo::fuzz
