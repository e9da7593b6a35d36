#include "HalvoHelper/security/PkgSignature.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "HalvoHelper/testing/SignatureReports.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(PkgSignatureTest, ReadsAWholeReport) {
  const HalvoPkgSignature signature = halvoParsePkgSignature(kGoodSignatureReport);

  EXPECT_EQ(signature,
            (HalvoPkgSignature{
                .status = "signed by a developer certificate issued by Apple for distribution",
                .notarization = "trusted by the Apple notary service",
                .chain = {{0, "Developer ID Installer: Halvo Audio (QX4TRM2ZL9)",
                           "B8679C5B91E862E4A2E6EC4CDE0A0B187E7049F5395C6B5835BF9F18E4DFA8D5"},
                          {1, "Developer ID Certification Authority",
                           "F16CD3C54C7F83CEA4BF1A3E6A0819C8AAA8E4A1528FD144715F350643D2DF3A"},
                          {2, "Apple Root CA", "B0B1730ECBC7FF4505142C49F1295E6EDA6BCAED7E2C68C5BE91B5A11001F024"}}}));
}

TEST(PkgSignatureTest, ReadsAReportOfAnUnsignedPackage) {
  EXPECT_EQ(halvoParsePkgSignature("Package \"incoming.pkg\":\n   Status: no signature\n"),
            (HalvoPkgSignature{.status = "no signature", .notarization = "", .chain = {}}));
}

struct NothingRow {
  const char* name;
  std::string_view report;
};

class TextThatIsNoReport : public testing::TestWithParam<NothingRow> {};

TEST_P(TextThatIsNoReport, GivesAnEmptyRecord) {
  EXPECT_EQ(halvoParsePkgSignature(GetParam().report), HalvoPkgSignature());
}

INSTANTIATE_TEST_SUITE_P(Table, TextThatIsNoReport,
                         testing::Values(NothingRow{"Empty", ""}, NothingRow{"LineFeeds", "\n\n\n"},
                                         NothingRow{"SpawnFailure", "spawn failed: No such file or directory"},
                                         NothingRow{"ErrorOfTheTool", "Could not open package: incoming.pkg"},
                                         NothingRow{"KeyWithoutColon", "Status no signature"},
                                         NothingRow{"KeyInOtherCase", "status: x\nSTATUS: x\nnotarization: y"},
                                         NothingRow{"KeyNotAtTheStart", "Package Status: x"},
                                         NothingRow{"BlankBeforeTheColon", "Status : x"},
                                         NothingRow{"NoBreakSpaceBeforeTheKey", "\xC2\xA0Status: x"},
                                         NothingRow{"FingerprintOfNobody", "SHA256 Fingerprint:\nAA BB\n"}),
                         [](const auto& row) { return row.param.name; });

TEST(PkgSignatureTest, TrimsBlanksAndTabsAroundValues) {
  const auto signature = halvoParsePkgSignature("\t Status: \t a b \t\n Notarization:\tc\t \n1. \t Name \t");

  EXPECT_EQ(signature, (HalvoPkgSignature{"a b", "c", {{0, "Name", ""}}}));
}

TEST(PkgSignatureTest, LeavesOtherWhitespaceInValues) {
  EXPECT_EQ(halvoParsePkgSignature("Status:\xC2\xA0x\xC2\xA0\r").status, "\xC2\xA0x\xC2\xA0\r");
}

TEST(PkgSignatureTest, SplitsAtLineFeedsOnly) {
  EXPECT_EQ(halvoParsePkgSignature("Status: a\rStatus: b\xE2\x80\xA8Status: c\vStatus: d").status,
            "a\rStatus: b\xE2\x80\xA8Status: c\vStatus: d");
}

TEST(PkgSignatureTest, KeepsTheCarriageReturnOfALineEnd) {
  const auto signature = halvoParsePkgSignature("Status: a\r\n1. Leaf\r\nSHA256 Fingerprint:\r\nAA BB\r\nCC\r\n");

  EXPECT_EQ(signature, (HalvoPkgSignature{"a\r", "", {{0, "Leaf\r", "AABBCC"}}}));
}

TEST(PkgSignatureTest, TakesTheLastOfRepeatedKeys) {
  const auto signature =
      halvoParsePkgSignature("Status: first\nNotarization: one\nStatus: second\nNotarization: two\nStatus:\n");

  EXPECT_EQ(signature, (HalvoPkgSignature{"", "two", {}}));
}

TEST(PkgSignatureTest, TakesKeysBetweenCertificates) {
  const auto signature = halvoParsePkgSignature("1. Leaf\nStatus: x\nSHA256 Fingerprint:\nAA\nNotarization: y\nBB");

  EXPECT_EQ(signature, (HalvoPkgSignature{"x", "y", {{0, "Leaf", "AABB"}}}));
}

TEST(PkgSignatureTest, TakesAnEmbeddedNulAsText) {
  EXPECT_EQ(halvoParsePkgSignature(std::string_view("Status: a\0b", 11)).status, std::string("a\0b", 3));
}

// Certificate lines.

struct CertificateRow {
  const char* name;
  std::string_view line;
  std::vector<HalvoPkgCert> chain;
};

class CertificateLine : public testing::TestWithParam<CertificateRow> {};

TEST_P(CertificateLine, IsANumberADotAndAName) {
  EXPECT_EQ(halvoParsePkgSignature(GetParam().line).chain, GetParam().chain);
}

INSTANTIATE_TEST_SUITE_P(
    Table, CertificateLine,
    testing::Values(
        CertificateRow{"Plain", "1. Leaf", {{0, "Leaf", ""}}},
        CertificateRow{"WithoutABlank", "1.Leaf", {{0, "Leaf", ""}}},
        CertificateRow{"NumberAsName", "1.5", {{0, "5", ""}}},
        CertificateRow{"DotsInTheName", "2. a.b.c", {{1, "a.b.c", ""}}},
        CertificateRow{"SecondDotFirst", "1..x", {{0, ".x", ""}}},
        CertificateRow{"TwoDigits", "12. x", {{11, "x", ""}}}, CertificateRow{"PlusSign", "+1. x", {{0, "x", ""}}},
        CertificateRow{"LeadingZeros", "003. x", {{2, "x", ""}}},
        CertificateRow{"LargestNumber", "9223372036854775807. x", {{9223372036854775806, "x", ""}}},
        CertificateRow{"StatusWithANumber", "1.Status: x", {{0, "Status: x", ""}}},
        CertificateRow{"FingerprintWithANumber", "1.SHA256 Fingerprint:\nAA", {{0, "SHA256 Fingerprint:", ""}}},
        CertificateRow{"SeparatorWithANumber", "1.---", {{0, "---", ""}}},
        CertificateRow{"Indented", "\t   3. Root  ", {{2, "Root", ""}}}, CertificateRow{"Zero", "0. Foo", {}},
        CertificateRow{"Negative", "-1. Foo", {}}, CertificateRow{"TooLarge", "9223372036854775808. Foo", {}},
        CertificateRow{"NothingBehindTheDot", "2.", {}}, CertificateRow{"BlanksBehindTheDot", "1.   ", {}},
        CertificateRow{"BlankBeforeTheDot", "1 . Foo", {}}, CertificateRow{"NoNumber", ". Foo", {}},
        CertificateRow{"NoDot", "1 Foo", {}}, CertificateRow{"Word", "a. Foo", {}},
        CertificateRow{"NumberAfterAWord", "No 1. Foo", {}}, CertificateRow{"TwoSigns", "+-1. Foo", {}},
        CertificateRow{"SignBehindTheNumber", "1+. Foo", {}}, CertificateRow{"SignInTheNumber", "1+1. Foo", {}},
        CertificateRow{"SignAlone", "+. Foo", {}}, CertificateRow{"OtherDigits", "\xD9\xA1. Foo", {}}),
    [](const auto& row) { return row.param.name; });

// Lines inside a certificate that look like the beginning of another one.

struct InnerLineRow {
  const char* name;
  std::string_view report;
  std::vector<HalvoPkgCert> chain;
};

class LineInsideACertificate : public testing::TestWithParam<InnerLineRow> {};

TEST_P(LineInsideACertificate, BeginsAnotherOnlyWithADotAndSomethingBehindIt) {
  EXPECT_EQ(halvoParsePkgSignature(GetParam().report).chain, GetParam().chain);
}

INSTANTIATE_TEST_SUITE_P(
    Table, LineInsideACertificate,
    testing::Values(
        InnerLineRow{"DecimalDigitsOnly", "1. Leaf\nSHA256 Fingerprint:\n12345678\n90", {{0, "Leaf", "1234567890"}}},
        InnerLineRow{"NumberWithoutADot", "1. Leaf\n2\nSHA256 Fingerprint:\nAA", {{0, "Leaf", "AA"}}},
        InnerLineRow{"NumberWithADotOnly", "1. Leaf\n2.\nSHA256 Fingerprint:\nAA", {{0, "Leaf", "AA"}}},
        InnerLineRow{"NumberWithADotAndBlanks", "1. Leaf\n2. \t\nSHA256 Fingerprint:\nAA", {{0, "Leaf", "AA"}}},
        InnerLineRow{"NumberWithADotAmongTheDigits", "1. Leaf\nSHA256 Fingerprint:\nAA\n2.\nBB", {{0, "Leaf", "AA"}}},
        InnerLineRow{
            "OneCharacterBehindTheDot", "1. Leaf\n2.x\nSHA256 Fingerprint:\nAA", {{0, "Leaf", ""}, {1, "x", "AA"}}}),
    [](const auto& row) { return row.param.name; });

TEST(PkgSignatureTest, TakesPositionsFromTheReport) {
  EXPECT_THAT(halvoParsePkgSignature("1. a\n3. b\n3. c").chain,
              ElementsAre(HalvoPkgCert{0, "a", ""}, HalvoPkgCert{2, "b", ""}, HalvoPkgCert{2, "c", ""}));
}

TEST(PkgSignatureTest, KeepsTheOrderOfTheReport) {
  EXPECT_THAT(halvoParsePkgSignature("3. c\n1. a\n2. b").chain,
              ElementsAre(HalvoPkgCert{2, "c", ""}, HalvoPkgCert{0, "a", ""}, HalvoPkgCert{1, "b", ""}));
}

TEST(PkgSignatureTest, EndsTheCertificateBeforeAtALineThatBeginsTheNext) {
  EXPECT_THAT(halvoParsePkgSignature("1. a\nSHA256 Fingerprint:\nAA\n2. b\nBB").chain,
              ElementsAre(HalvoPkgCert{0, "a", "AA"}, HalvoPkgCert{1, "b", ""}));
}

// A line of a dot and blanks between the number and the end cannot come out of a trimmed line, but a name of other
// whitespace is a name.
TEST(PkgSignatureTest, KeepsANameOfANoBreakSpace) {
  EXPECT_THAT(halvoParsePkgSignature("1. \xC2\xA0").chain, ElementsAre(HalvoPkgCert{0, "\xC2\xA0", ""}));
}

// Properties.

}  // namespace
}  // namespace halvo
