#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "HalvoHelper/security/PkgSignature.h"
#include "HalvoHelper/security/PkgTrust.h"
#include "HalvoHelper/testing/GoodSignature.h"
#include "HalvoHelper/testing/SignatureReports.h"

namespace halvo {
namespace {

bool trustedByTheRules(const HalvoPkgSignature& s) {
  const auto holds = [](const std::string& text, std::string_view part) { return text.find(part) != text.npos; };
  return holds(s.status, kStatus) && !holds(s.status, "No Signature") && holds(s.notarization, kNotary) &&
         s.chain.size() >= 3 && s.chain[0].commonName.rfind("Developer ID Installer: ", 0) == 0 &&
         holds(s.chain[0].commonName, "(QX4TRM2ZL9)") && (s.chain[1].sha256 == kG1 || s.chain[1].sha256 == kG2) &&
         s.chain[2].sha256 == kRoot;
}

using Change = void (*)(HalvoPkgSignature&);

// Some break a condition and some break none, so that all combinations of a few come up.
const std::vector<Change> kChanges = {
    [](HalvoPkgSignature& s) { s.status = "is " + s.status + "."; },
    [](HalvoPkgSignature& s) { s.status += ", No Signature"; },
    [](HalvoPkgSignature& s) { s.status = ""; },
    [](HalvoPkgSignature& s) { s.status = "signed by untrusted certificate"; },
    [](HalvoPkgSignature& s) { s.notarization = "is " + s.notarization + "."; },
    [](HalvoPkgSignature& s) { s.notarization = ""; },
    [](HalvoPkgSignature& s) { std::swap(s.status, s.notarization); },
    [](HalvoPkgSignature& s) {
      s.chain.push_back({3, kLeaf, kRoot});
    },
    [](HalvoPkgSignature& s) {
      s.chain.insert(s.chain.begin(), HalvoPkgCert{0, kLeaf, kG1});
    },
    [](HalvoPkgSignature& s) { s.chain.pop_back(); },
    [](HalvoPkgSignature& s) { std::swap(s.chain.front(), s.chain.back()); },
    [](HalvoPkgSignature& s) { s.chain.front().commonName = "Developer ID Installer: Evil (ABCDE12345)"; },
    [](HalvoPkgSignature& s) { s.chain.front().commonName += " Ltd."; },
    [](HalvoPkgSignature& s) { s.chain.front().commonName.insert(0, "x"); },
    [](HalvoPkgSignature& s) { s.chain.front().sha256 = kG1; },
    [](HalvoPkgSignature& s) { s.chain[1].sha256 = kG1; },
    [](HalvoPkgSignature& s) { s.chain[1].sha256 = ""; },
    [](HalvoPkgSignature& s) { s.chain.back().sha256 = kRoot; },
    [](HalvoPkgSignature& s) { s.chain.back().sha256.assign(64, '0'); },
};

HalvoPkgSignature changed(const std::vector<std::size_t>& changes) {
  HalvoPkgSignature signature = goodSignature();
  for (const std::size_t change : changes) {
    if (signature.chain.size() > 1) kChanges[change](signature);
  }
  return signature;
}

RC_GTEST_PROP(PkgTrustProperty, IsTrustedExactlyWhenEveryConditionHolds, ()) {
  const auto count = *rc::gen::inRange<std::size_t>(0, 5);
  const auto changes =
      *rc::gen::container<std::vector<std::size_t>>(count, rc::gen::inRange<std::size_t>(0, kChanges.size()));
  const HalvoPkgSignature signature = changed(changes);

  const bool trusted = std::holds_alternative<Trusted>(halvoCheckPkgTrust(signature, kTeam));

  RC_CLASSIFY(trusted, "trusted");
  RC_ASSERT(trusted == trustedByTheRules(signature));
}

std::string reportWithAnotherRoot() {
  std::string report(kGoodSignatureReport);
  return report.replace(report.find("B0 B1"), 5, "B0 B2");
}

RC_GTEST_PROP(JudgedReportProperty, OneChangedByteNeverMakesABadReportGood, ()) {
  const auto at = *rc::gen::inRange<std::size_t>(0, kGoodSignatureReport.size());
  std::string report = reportWithAnotherRoot();
  report[at] = *rc::gen::arbitrary<char>();
  RC_PRE(report != kGoodSignatureReport);

  RC_ASSERT(!std::holds_alternative<Trusted>(halvoCheckPkgReport(report, kTeam)));
}

// A good report with a few more lines wherever they please.
rc::Gen<std::string> reportsWithMore() {
  const auto lines = rc::gen::element<std::string>("4. x\n", "1. Developer ID Installer: Halvo Audio (QX4TRM2ZL9)\n",
                                                   "5.\n", "SHA256 Fingerprint:\n", "AB\n", "F\n", "F 01\n---\n",
                                                   "text\n", "Status: no signature\n", "Notarization: revoked\n");
  const auto additions = rc::gen::pair(rc::gen::inRange<std::size_t>(0, kGoodSignatureReport.size()), lines);
  return rc::gen::map(rc::gen::container<std::vector<std::pair<std::size_t, std::string>>>(additions), [](auto added) {
    std::string report(kGoodSignatureReport);
    for (const auto& [place, line] : added) report.insert(report.rfind('\n', place) + 1, line);
    return report;
  });
}

RC_GTEST_PROP(JudgedReportProperty, WhatIsNotKeptNeverDecides, ()) {
  const std::string report = *rc::gen::scale(0.05, reportsWithMore());
  const HalvoPkgTrust expected = halvoCheckPkgTrust(halvoParsePkgSignature(report), kTeam);

  RC_CLASSIFY(std::holds_alternative<Trusted>(expected), "trusted");
  RC_ASSERT(halvoCheckPkgReport(report, kTeam) == expected);
}

}  // namespace
}  // namespace halvo
