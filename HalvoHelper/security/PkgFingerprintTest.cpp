#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "HalvoHelper/security/PkgSignature.h"

namespace halvo {
namespace {

using testing::ElementsAre;

constexpr const char* kHexDigits = "7AFC9D01A62F03A2DE9637936D4AFE68090D2DE18D03F29C88CFB0B1BA63587F";

struct FingerprintRow {
  const char* name;
  std::string_view lines;  // behind the line of the certificate
  std::string_view sha256;
};

class Fingerprint : public testing::TestWithParam<FingerprintRow> {};

TEST_P(Fingerprint, IsTheDigitsOfTheLinesBehindItsKey) {
  const auto chain = halvoParsePkgSignature("1. Leaf\n" + std::string(GetParam().lines)).chain;

  EXPECT_THAT(chain, ElementsAre(HalvoPkgCert{0, "Leaf", std::string(GetParam().sha256)}));
}

INSTANTIATE_TEST_SUITE_P(
    Table, Fingerprint,
    testing::Values(
        FingerprintRow{"OnTwoLinesOfSixteen",
                       "SHA256 Fingerprint:\n7A FC 9D 01 A6 2F 03 A2 DE 96 37 93 6D 4A FE 68\n"
                       "09 0D 2D E1 8D 03 F2 9C 88 CF B0 B1 BA 63 58 7F\n",
                       kHexDigits},
        FingerprintRow{"InLowerCase",
                       "SHA256 Fingerprint:\n7a fc 9d 01 a6 2f 03 a2 de 96 37 93 6d 4a fe 68\n"
                       "09 0d 2d e1 8d 03 f2 9c 88 cf b0 b1 ba 63 58 7f\n",
                       kHexDigits},
        FingerprintRow{"OnOneLineWithoutBlanks",
                       "SHA256 Fingerprint:\n7AFC9D01A62F03A2DE9637936D4AFE68090D2DE18D03F29C88CFB0B1BA63587F",
                       kHexDigits},
        FingerprintRow{"AcrossAnEmptyLine", "SHA256 Fingerprint:\nAA\n\nBB\n", "AABB"},
        FingerprintRow{"AcrossALineOfBlanks", "SHA256 Fingerprint:\nAA\n \t \nBB\n", "AABB"},
        FingerprintRow{"BetweenOtherWhitespace",
                       "SHA256 Fingerprint:\nAA\xC2\xA0"
                       "BB\vCC\xE3\x80\x80"
                       "DD\n",
                       "AABBCCDD"},
        FingerprintRow{"AcrossAnExpiryLine", "SHA256 Fingerprint:\nAA\nExpires: 2029\nBB\n", "AABB"},
        FingerprintRow{"NotBegunByAnExpiryLine", "Expires: 2029\nAA\n", ""},
        FingerprintRow{"TextBehindTheKeyIsIgnored", "SHA256 Fingerprint: CC DD\nAA\n", "AA"},
        FingerprintRow{"EndedByASeparator", "SHA256 Fingerprint:\nAA\n---\nBB\n", "AA"},
        FingerprintRow{"EndedByALongSeparator", "SHA256 Fingerprint:\nAA\n--------\nBB\n", "AA"},
        FingerprintRow{"EndedByTwoDashesAsOtherText", "SHA256 Fingerprint:\nAA\n--\nBB\n", "AA"},
        FingerprintRow{"EndedByOtherText", "SHA256 Fingerprint:\nAA\nSigned with a trusted timestamp\nBB\n", "AA"},
        FingerprintRow{"EndedByANumberWithoutName", "SHA256 Fingerprint:\nAA\n2.\nBB\n", "AA"},
        FingerprintRow{"EndedByZero", "SHA256 Fingerprint:\nAA\n0. Foo\nBB\n", "AA"},
        FingerprintRow{"NothingOfAMixedLine", "SHA256 Fingerprint:\nAA BG\nCC\n", ""},
        FingerprintRow{"NothingOfAnIllFormedLine", "SHA256 Fingerprint:\nAA \xA0\n", ""},
        FingerprintRow{"NothingOfOtherDigits", "SHA256 Fingerprint:\nAA \xEF\xBC\xA1\n", ""},
        FingerprintRow{"ResumedByARepeatedKey", "SHA256 Fingerprint:\nAA\n---\nSHA256 Fingerprint:\nBB\n", "AABB"},
        FingerprintRow{"OtherDigestsAreNotTaken", "SHA1 Fingerprint:\nAA\n", ""},
        FingerprintRow{"KeyInOtherCase", "sha256 fingerprint:\nAA\n", ""},
        FingerprintRow{"WithoutAKey", "AA BB CC\n", ""},
        FingerprintRow{"OddNumberOfDigits", "SHA256 Fingerprint:\nA\nB C\n", "ABC"}),
    [](const auto& row) { return row.param.name; });

TEST(FingerprintTest, GivesDigitsBeforeTheFirstCertificateToNobody) {
  EXPECT_THAT(halvoParsePkgSignature("SHA256 Fingerprint:\nAA\n1. Leaf\nBB").chain,
              ElementsAre(HalvoPkgCert{0, "Leaf", ""}));
}

TEST(FingerprintTest, GivesDigitsBehindANumberOfZeroToTheCertificateBefore) {
  EXPECT_THAT(halvoParsePkgSignature("1. Leaf\n0. Foo\nSHA256 Fingerprint:\nAA").chain,
              ElementsAre(HalvoPkgCert{0, "Leaf", "AA"}));
}

}  // namespace
}  // namespace halvo
