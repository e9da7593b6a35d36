#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

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

RC_GTEST_PROP(PkgSignatureProperty, AnyTextGivesTrimmedNamesAndUpperCaseDigits, ()) {
  const auto report = *rc::gen::container<std::string>(
      rc::gen::element(' ', '\t', '\n', '\r', '.', '1', '2', 'a', 'F', 'g', ':', '-', '\xC2', '\xA0', '\0'));

  const auto signature = halvoParsePkgSignature("1. x\nSHA256 Fingerprint:\n" + report);

  RC_ASSERT(!signature.chain.empty());
  RC_ASSERT(std::ranges::all_of(signature.chain, isPlausible));
}

}  // namespace
}  // namespace halvo
