#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include "HalvoHelper/security/PkgSignature.h"
#include "HalvoHelper/testing/SignatureReports.h"

namespace halvo {
namespace {

std::string indentedBy(const std::string& indentation, std::string_view report) {
  std::string indented = indentation;
  for (const char c : report) {
    indented += c;
    if (c == '\n') indented += indentation;
  }
  return indented;
}

bool isBlank(char c) { return c == ' ' || c == '\t'; }

bool isPlausible(const HalvoPkgCert& certificate) {
  const std::string& name = certificate.commonName;
  return certificate.position >= 0 && !name.empty() && !isBlank(name.front()) && !isBlank(name.back()) &&
         name.find('\n') == std::string::npos &&
         certificate.sha256.find_first_not_of("0123456789ABCDEF") == std::string::npos;
}

RC_GTEST_PROP(PkgSignatureProperty, IndentationDoesNotMatter, ()) {
  const auto indentation = *rc::gen::container<std::string>(rc::gen::element(' ', '\t'));

  const auto signature = halvoParsePkgSignature(indentedBy(indentation, kGoodSignatureReport));

  RC_ASSERT(signature == halvoParsePkgSignature(kGoodSignatureReport));
}

rc::Gen<std::string> texts() {
  return rc::gen::container<std::string>(
      rc::gen::element(' ', '\t', '\n', '\r', '.', '1', '2', 'a', 'F', 'g', ':', '-', '\xC2', '\xA0', '\0'));
}

RC_GTEST_PROP(PkgSignatureProperty, AnyTextGivesTrimmedNamesAndUpperCaseDigits, ()) {
  const std::string report = *texts();

  const auto signature = halvoParsePkgSignature("1. x\nSHA256 Fingerprint:\n" + report);

  RC_ASSERT(!signature.chain.empty());
  RC_ASSERT(std::ranges::all_of(signature.chain, isPlausible));
}

HalvoPkgSignature cut(HalvoPkgSignature signature, const HalvoPkgChainLimits& limits) {
  signature.chain.resize(std::min(signature.chain.size(), limits.certificates));
  for (HalvoPkgCert& each : signature.chain) each.sha256.resize(std::min(each.sha256.size(), limits.digits));
  return signature;
}

RC_GTEST_PROP(PkgSignatureProperty, LimitsCutTheChainAndItsFingerprintsAndNothingElse, ()) {
  const auto pieces = *rc::gen::container<std::vector<std::string>>(
      rc::gen::oneOf(rc::gen::element<std::string>("\n1. x\nSHA256 Fingerprint:\n", "\nSHA256 Fingerprint:\n",
                                                   "\nA b\n", "\n---\n", "\n3.\n", "\nStatus: x\n"),
                     rc::gen::scale(0.1, texts())));
  const std::string report = std::accumulate(pieces.begin(), pieces.end(), std::string());
  const HalvoPkgChainLimits limits = {.certificates = *rc::gen::inRange<std::size_t>(0, 4),
                                      .digits = *rc::gen::inRange<std::size_t>(0, 8)};
  const HalvoPkgSignature whole = halvoParsePkgSignature(report);

  RC_CLASSIFY(whole != cut(whole, limits), "cut");
  RC_ASSERT(halvoParsePkgSignature(report, limits) == cut(whole, limits));
}

}  // namespace
}  // namespace halvo
