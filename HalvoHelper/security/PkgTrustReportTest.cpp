// Whole reports, read and judged as a package's is.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "HalvoHelper/security/PkgTrust.h"
#include "HalvoHelper/testing/GoodSignature.h"
#include "HalvoHelper/testing/SignatureReports.h"

namespace halvo {
namespace {

using enum HalvoPkgDistrust;

HalvoPkgTrust judge(std::string_view report) { return halvoCheckPkgReport(report, kTeam); }

std::string with(std::string_view what, std::string_view replacement) {
  std::string report(kGoodSignatureReport);
  return report.replace(report.find(what), what.size(), replacement);
}

TEST(JudgedReportTest, IsTrustedAsItShouldBe) { EXPECT_EQ(judge(kGoodSignatureReport), HalvoPkgTrust(Trusted{kLeaf})); }

std::vector<std::size_t> trustedLengths(std::string_view report) {
  std::vector<std::size_t> lengths;
  for (std::size_t length = 0; length <= report.size(); ++length) {
    if (std::holds_alternative<Trusted>(judge(report.substr(0, length)))) lengths.push_back(length);
  }
  return lengths;
}

TEST(JudgedReportTest, IsNeverTrustedWhenCutBeforeTheLastDigitOfTheRoot) {
  const std::size_t end = kGoodSignatureReport.find("01 F0 24") + std::string_view("01 F0 24").size();

  EXPECT_EQ(trustedLengths(kGoodSignatureReport).front(), end);
}

struct ReportRow {
  const char* name;
  std::string report;
  HalvoPkgTrust expected;
};

class JudgedReport : public testing::TestWithParam<ReportRow> {};

TEST_P(JudgedReport, IsNotTakenIn) { EXPECT_EQ(judge(GetParam().report), GetParam().expected); }

INSTANTIATE_TEST_SUITE_P(
    Hostile, JudgedReport,
    testing::Values(
        ReportRow{"PackageNamedLikeTheCertificate",
                  "Package \"Developer ID Installer: Halvo Audio (QX4TRM2ZL9)\":\n   Status: no signature\n",
                  Distrusted{unsigned_, "status: no signature"}},
        ReportRow{"StatusInAPackageName",
                  "Package \"Status: signed by a developer certificate issued by Apple for distribution\":\n",
                  Distrusted{unsigned_, "status: <none>"}},
        ReportRow{"LeafNameThatHoldsTheTeamElsewhere",
                  with("Installer: Halvo Audio (QX4TRM2ZL9)", "Application: (QX4TRM2ZL9) (ABCDE12345)"),
                  Distrusted{notDeveloperID, "leaf: Developer ID Application: (QX4TRM2ZL9) (ABCDE12345)"}},
        ReportRow{"CertificateLineMadeOfTheStatusKey", with("    1. Developer", "    1.Status: x\n    1. Developer"),
                  Distrusted{notDeveloperID, "leaf: Status: x"}},
        ReportRow{"SecondLeafInFront",
                  with("    1. Developer", "    1. Developer ID Installer: Evil (ABCDE12345)\n    1. Developer"),
                  Distrusted{wrongTeam, "leaf: Developer ID Installer: Evil (ABCDE12345)"}},
        ReportRow{"SecondLeafBehind",
                  with("    2. Developer", "    2. Developer ID Installer: Evil (ABCDE12345)\n    2. Developer"),
                  Distrusted{unknownAuthority, "intermediate: Developer ID Installer: Evil (ABCDE12345)"}},
        ReportRow{"LaterStatusTakesTheSignatureBack", std::string(kGoodSignatureReport) + "Status: no signature\n",
                  Distrusted{unsigned_, "status: no signature"}},
        ReportRow{"LaterNotarizationTakesItBack", std::string(kGoodSignatureReport) + "Notarization: revoked\n",
                  Distrusted{notNotarized, "notarization: revoked"}},
        ReportRow{"DigitsBehindTheRoot", std::string(kGoodSignatureReport) + "FF\n",
                  Distrusted{unknownAuthority, "root: Apple Root CA"}},
        ReportRow{"OneDigitBehindTheRoot", std::string(kGoodSignatureReport) + "F\n",
                  Distrusted{unknownAuthority, "root: Apple Root CA"}},
        ReportRow{"OneDigitInFrontOfTheRoot", with("B0 B1 73", "FB0 B1 73"),
                  Distrusted{unknownAuthority, "root: Apple Root CA"}},
        ReportRow{"OneDigitBehindTheIntermediate", with("43 D2 DF 3A", "43 D2 DF 3A F"),
                  Distrusted{unknownAuthority, "intermediate: Developer ID Certification Authority"}},
        ReportRow{"OtherTextOnTheLineOfRootDigits", with("B0 B1 73", "B0 B1 73 x"),
                  Distrusted{unknownAuthority, "root: Apple Root CA"}},
        ReportRow{"CertificateWithoutTheNumberedName", with("    3. Apple Root CA\n", "    3.\n"),
                  Distrusted{chainTruncated, "chain has 2 certificate(s)"}}),
    [](const auto& row) { return row.param.name; });

TEST(JudgedReportTest, IsTrustedWhateverFollowsTheRoot) {
  const std::string further = "    4. Apple Root CA\n       SHA256 Fingerprint:\n           00\n    5.\n";

  EXPECT_EQ(judge(std::string(kGoodSignatureReport) + further), HalvoPkgTrust(Trusted{kLeaf}));
}

TEST(JudgedReportTest, IsTrustedWhateverFingerprintTheLeafHas) {
  EXPECT_EQ(judge(with("B8 67 9C", std::string(100, 'F'))), HalvoPkgTrust(Trusted{kLeaf}));
}

TEST(JudgedReportTest, IsTrustedWithPositionsOneThreeThree) {
  EXPECT_EQ(judge(with("    2. Developer", "    3. Developer")), HalvoPkgTrust(Trusted{kLeaf}));
}

std::string withCarriageReturns(std::string_view report) {
  std::string other;
  for (const char c : report) other += c == '\n' ? std::string("\r\n") : std::string(1, c);
  return other;
}

TEST(JudgedReportTest, IsTrustedWithCarriageReturnsWhichBelongToTheName) {
  EXPECT_EQ(judge(withCarriageReturns(kGoodSignatureReport)), HalvoPkgTrust(Trusted{std::string(kLeaf) + "\r"}));
}

}  // namespace
}  // namespace halvo
