#include "HalvoHelper/security/PkgTrust.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>

#include "HalvoHelper/testing/GoodSignature.h"

namespace halvo {
namespace {

using enum HalvoPkgDistrust;

struct VerdictRow {
  const char* name;
  std::function<void(HalvoPkgSignature&)> change;  // made to a signature that would be trusted
  HalvoPkgTrust expected;
};

class PkgTrust : public testing::TestWithParam<VerdictRow> {};

TEST_P(PkgTrust, IsTheFirstCheckThatFails) {
  HalvoPkgSignature signature = goodSignature();

  GetParam().change(signature);

  EXPECT_EQ(halvoCheckPkgTrust(signature, kTeam), GetParam().expected);
}

const auto rowName = [](const auto& row) { return row.param.name; };
using Signature = HalvoPkgSignature;

INSTANTIATE_TEST_SUITE_P(
    Trusted, PkgTrust,
    testing::Values(
        VerdictRow{"AsItShouldBe", [](Signature&) {}, Trusted{kLeaf}},
        VerdictRow{"FirstGenerationIntermediate", [](Signature& s) { s.chain[1].sha256 = kG1; }, Trusted{kLeaf}},
        VerdictRow{"LongerStatus", [](Signature& s) { s.status = "is " + s.status + " (x)"; }, Trusted{kLeaf}},
        VerdictRow{"LongerNotarization", [](Signature& s) { s.notarization = "is " + s.notarization + "!"; },
                   Trusted{kLeaf}},
        VerdictRow{"FourthCertificate",
                   [](Signature& s) {
                     s.chain.push_back({3, "Anything", ""});
                   },
                   Trusted{kLeaf}},
        VerdictRow{"OddPositions", [](Signature& s) { s.chain[0].position = s.chain[1].position = 7; }, Trusted{kLeaf}},
        VerdictRow{"OtherIntermediateName", [](Signature& s) { s.chain[1].commonName = "x"; }, Trusted{kLeaf}},
        VerdictRow{"NoLeafFingerprint", [](Signature& s) { s.chain[0].sha256 = ""; }, Trusted{kLeaf}}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Unsigned, PkgTrust,
    testing::Values(
        VerdictRow{"NoStatus", [](Signature& s) { s.status = ""; }, Distrusted{unsigned_, "status: <none>"}},
        VerdictRow{"NoSignature", [](Signature& s) { s.status = "no signature"; },
                   Distrusted{unsigned_, "status: no signature"}},
        VerdictRow{"InCapitals", [](Signature& s) { s.status = "NO SIGNATURE"; },
                   Distrusted{unsigned_, "status: NO SIGNATURE"}},
        VerdictRow{"InMixedCase", [](Signature& s) { s.status = "has No SignaTure at all"; },
                   Distrusted{unsigned_, "status: has No SignaTure at all"}},
        VerdictRow{"BesideTheSignedPhrase", [](Signature& s) { s.status += ", No Signature"; },
                   Distrusted{unsigned_,
                              "status: signed by a developer certificate issued by Apple for distribution, "
                              "No Signature"}},
        VerdictRow{"BeforeEveryOtherCheck", [](Signature& s) { s = {}; }, Distrusted{unsigned_, "status: <none>"}}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    KindOfSignature, PkgTrust,
    testing::Values(
        VerdictRow{"AppStore", [](Signature& s) { s.status = "signed Apple Software"; },
                   Distrusted{notDeveloperID, "status: signed Apple Software"}},
        VerdictRow{"UntrustedCertificate", [](Signature& s) { s.status = "signed by untrusted certificate"; },
                   Distrusted{notDeveloperID, "status: signed by untrusted certificate"}},
        VerdictRow{
            "PhraseInOtherCase",
            [](Signature& s) { s.status = "Signed by a developer certificate issued by Apple for distribution"; },
            Distrusted{notDeveloperID, "status: Signed by a developer certificate issued by Apple for distribution"}},
        VerdictRow{
            "PhraseCut", [](Signature& s) { s.status.pop_back(); },
            Distrusted{notDeveloperID, "status: signed by a developer certificate issued by Apple for distributio"}},
        VerdictRow{"BeforeNotarization",
                   [](Signature& s) {
                     s.status = "x";
                     s.notarization = "";
                   },
                   Distrusted{notDeveloperID, "status: x"}}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Notarization, PkgTrust,
    testing::Values(VerdictRow{"Missing", [](Signature& s) { s.notarization = ""; },
                               Distrusted{notNotarized, "notarization: <none>"}},
                    VerdictRow{"OtherAnswer", [](Signature& s) { s.notarization = "not notarized"; },
                               Distrusted{notNotarized, "notarization: not notarized"}},
                    VerdictRow{"PhraseInOtherCase",
                               [](Signature& s) { s.notarization = "Trusted by the Apple notary service"; },
                               Distrusted{notNotarized, "notarization: Trusted by the Apple notary service"}},
                    VerdictRow{"PhraseOnlyInTheStatus",
                               [](Signature& s) {
                                 s.status += ", trusted by the Apple notary service";
                                 s.notarization = "";
                               },
                               Distrusted{notNotarized, "notarization: <none>"}},
                    VerdictRow{"BeforeTheTeam",
                               [](Signature& s) {
                                 s.notarization = "";
                                 s.chain[0].commonName = "Developer ID Installer: Evil (ABCDE12345)";
                               },
                               Distrusted{notNotarized, "notarization: <none>"}},
                    VerdictRow{"BeforeTheChain",
                               [](Signature& s) {
                                 s.notarization = "";
                                 s.chain.clear();
                               },
                               Distrusted{notNotarized, "notarization: <none>"}}),
    rowName);

INSTANTIATE_TEST_SUITE_P(Chain, PkgTrust,
                         testing::Values(VerdictRow{"Empty", [](Signature& s) { s.chain.clear(); },
                                                    Distrusted{chainTruncated, "chain has 0 certificate(s)"}},
                                         VerdictRow{"LeafAlone", [](Signature& s) { s.chain.resize(1); },
                                                    Distrusted{chainTruncated, "chain has 1 certificate(s)"}},
                                         VerdictRow{"WithoutRoot", [](Signature& s) { s.chain.resize(2); },
                                                    Distrusted{chainTruncated, "chain has 2 certificate(s)"}},
                                         VerdictRow{"TruncatedBeforeTheLeafIsLookedAt",
                                                    [](Signature& s) {
                                                      s.chain.resize(2);
                                                      s.chain[0].commonName =
                                                          "Developer ID Application: Evil (ABCDE12345)";
                                                    },
                                                    Distrusted{chainTruncated, "chain has 2 certificate(s)"}}),
                         rowName);

INSTANTIATE_TEST_SUITE_P(
    Leaf, PkgTrust,
    testing::Values(
        VerdictRow{"ForApplications",
                   [](Signature& s) { s.chain[0].commonName = "Developer ID Application: Halvo Audio (QX4TRM2ZL9)"; },
                   Distrusted{notDeveloperID, "leaf: Developer ID Application: Halvo Audio (QX4TRM2ZL9)"}},
        VerdictRow{"PrefixNotInFront",
                   [](Signature& s) { s.chain[0].commonName = "x Developer ID Installer: Halvo Audio (QX4TRM2ZL9)"; },
                   Distrusted{notDeveloperID, "leaf: x Developer ID Installer: Halvo Audio (QX4TRM2ZL9)"}},
        VerdictRow{"PrefixWithoutItsBlank",
                   [](Signature& s) { s.chain[0].commonName = "Developer ID Installer:Halvo Audio (QX4TRM2ZL9)"; },
                   Distrusted{notDeveloperID, "leaf: Developer ID Installer:Halvo Audio (QX4TRM2ZL9)"}},
        VerdictRow{"NotTheFirstOfTheChain", [](Signature& s) { std::swap(s.chain[0], s.chain[1]); },
                   Distrusted{notDeveloperID, "leaf: Developer ID CA"}},
        VerdictRow{"WithoutName", [](Signature& s) { s.chain[0].commonName = ""; },
                   Distrusted{notDeveloperID, "leaf: "}},
        VerdictRow{"BeforeTheTeam",
                   [](Signature& s) { s.chain[0].commonName = "Developer ID Application: Evil (ABCDE12345)"; },
                   Distrusted{notDeveloperID, "leaf: Developer ID Application: Evil (ABCDE12345)"}}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Team, PkgTrust,
    testing::Values(
        VerdictRow{"Other", [](Signature& s) { s.chain[0].commonName = "Developer ID Installer: Evil (ABCDE12345)"; },
                   Distrusted{wrongTeam, "leaf: Developer ID Installer: Evil (ABCDE12345)"}},
        VerdictRow{"InOtherCase",
                   [](Signature& s) { s.chain[0].commonName = "Developer ID Installer: Halvo Audio (qx4trm2zl9)"; },
                   Distrusted{wrongTeam, "leaf: Developer ID Installer: Halvo Audio (qx4trm2zl9)"}},
        VerdictRow{"WithoutParentheses",
                   [](Signature& s) { s.chain[0].commonName = "Developer ID Installer: QX4TRM2ZL9"; },
                   Distrusted{wrongTeam, "leaf: Developer ID Installer: QX4TRM2ZL9"}},
        VerdictRow{"LongerIdentifier",
                   [](Signature& s) { s.chain[0].commonName = "Developer ID Installer: Evil (QX4TRM2ZL9A)"; },
                   Distrusted{wrongTeam, "leaf: Developer ID Installer: Evil (QX4TRM2ZL9A)"}},
        VerdictRow{"BeforeThePins",
                   [](Signature& s) {
                     s.chain[0].commonName = "Developer ID Installer: Evil (ABCDE12345)";
                     s.chain[1].sha256 = s.chain[2].sha256 = "";
                   },
                   Distrusted{wrongTeam, "leaf: Developer ID Installer: Evil (ABCDE12345)"}}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Pins, PkgTrust,
    testing::Values(VerdictRow{"OtherIntermediate", [](Signature& s) { s.chain[1].sha256[0] = '0'; },
                               Distrusted{unknownAuthority, "intermediate: Developer ID CA"}},
                    VerdictRow{"IntermediateWithoutFingerprint", [](Signature& s) { s.chain[1].sha256 = ""; },
                               Distrusted{unknownAuthority, "intermediate: Developer ID CA"}},
                    VerdictRow{"IntermediateInLowerCase",
                               [](Signature& s) {
                                 s.chain[1].sha256 = "f16cd3c54c7f83cea4bf1a3e6a0819c8aaa8e4a1528fd144715f350643d2df3a";
                               },
                               Distrusted{unknownAuthority, "intermediate: Developer ID CA"}},
                    VerdictRow{"IntermediateCut", [](Signature& s) { s.chain[1].sha256.pop_back(); },
                               Distrusted{unknownAuthority, "intermediate: Developer ID CA"}},
                    VerdictRow{"IntermediateWithMoreBehind", [](Signature& s) { s.chain[1].sha256 += "00"; },
                               Distrusted{unknownAuthority, "intermediate: Developer ID CA"}},
                    VerdictRow{"RootAsIntermediate", [](Signature& s) { s.chain[1].sha256 = kRoot; },
                               Distrusted{unknownAuthority, "intermediate: Developer ID CA"}},
                    VerdictRow{"OtherRoot", [](Signature& s) { s.chain[2].sha256[63] = '5'; },
                               Distrusted{unknownAuthority, "root: Apple Root CA"}},
                    VerdictRow{"RootWithoutFingerprint", [](Signature& s) { s.chain[2].sha256 = ""; },
                               Distrusted{unknownAuthority, "root: Apple Root CA"}},
                    VerdictRow{"IntermediateAsRoot", [](Signature& s) { s.chain[2].sha256 = kG2; },
                               Distrusted{unknownAuthority, "root: Apple Root CA"}},
                    VerdictRow{"RootInFourthPlace",
                               [](Signature& s) {
                                 s.chain.insert(s.chain.begin() + 2, HalvoPkgCert{2, "Evil CA", "00"});
                               },
                               Distrusted{unknownAuthority, "root: Evil CA"}},
                    VerdictRow{"IntermediateBeforeRoot",
                               [](Signature& s) { s.chain[1].sha256 = s.chain[2].sha256 = "00"; },
                               Distrusted{unknownAuthority, "intermediate: Developer ID CA"}}),
    rowName);

TEST(PkgTrustTest, DemandsTheTeamItIsGiven) {
  EXPECT_EQ(halvoCheckPkgTrust(goodSignature(), "ABCDE12345"),
            HalvoPkgTrust(Distrusted{wrongTeam, std::string("leaf: ") + kLeaf}));
}

}  // namespace
}  // namespace halvo
