// Every way in which an install ends before anything is installed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>

#include "HalvoHelper/testing/InstallBench.h"

namespace halvo {
namespace {

using testing::Contains;
using testing::ElementsAre;

class InstallRefusalTest : public testing::Test {
 protected:
  InstallBench bench_;
};

TEST_F(InstallRefusalTest, AStagingDirectoryThatCannotBeMadeEndsTheRunWithoutCleanUp) {
  bench_.fs->failing = {"makePrivateDir /var/db/halvo/install-staging 700"};

  EXPECT_EQ(bench_.run(), InstallResult(InstallUntrustedPackage{HalvoPkgDistrust::stagingFailed}));

  EXPECT_THAT(bench_.calls(), ElementsAre("makePrivateDir /var/db/halvo/install-staging 700",
                                          "log: REFUSED: could not create staging dir /var/db/halvo/install-staging"));
}

TEST_F(InstallRefusalTest, APackageThatCannotBeStagedIsNeverJudged) {
  bench_.fs->failing = {"stageFile /Users/ada/Halvo 2.pkg -> /var/db/halvo/install-staging/incoming.pkg"};

  EXPECT_EQ(bench_.run(), InstallResult(InstallUntrustedPackage{HalvoPkgDistrust::stagingFailed}));

  EXPECT_THAT(bench_.calls(), ElementsAre("makePrivateDir /var/db/halvo/install-staging 700",
                                          "stageFile /Users/ada/Halvo 2.pkg -> "
                                          "/var/db/halvo/install-staging/incoming.pkg",
                                          "log: REFUSED: could not stage /Users/ada/Halvo 2.pkg -> "
                                          "/var/db/halvo/install-staging/incoming.pkg",
                                          "removeTree /var/db/halvo/install-staging"));
}

TEST_F(InstallRefusalTest, AnUntrustedPackageIsRefusedBeforeAnythingIsAskedOrChanged) {
  bench_.runner->replies = {{.code = 1, .output = "   Status: no signature\n"}};

  EXPECT_EQ(bench_.run(), InstallResult(InstallUntrustedPackage{HalvoPkgDistrust::unsigned_}));

  EXPECT_THAT(bench_.calls(), ElementsAre("makePrivateDir /var/db/halvo/install-staging 700",
                                          "stageFile /Users/ada/Halvo 2.pkg -> "
                                          "/var/db/halvo/install-staging/incoming.pkg",
                                          "run /usr/sbin/pkgutil --check-signature "
                                          "/var/db/halvo/install-staging/incoming.pkg",
                                          "log: REFUSED untrusted package (unsigned): status: no signature",
                                          "removeTree /var/db/halvo/install-staging"));
}

TEST_F(InstallRefusalTest, RunningAudioRefusesWithoutALogLine) {
  bench_.audio->flags = {false, true};

  EXPECT_EQ(bench_.run(), InstallResult(InstallAudioActive{}));

  EXPECT_THAT(bench_.calls(), ElementsAre("makePrivateDir /var/db/halvo/install-staging 700",
                                          "stageFile /Users/ada/Halvo 2.pkg -> "
                                          "/var/db/halvo/install-staging/incoming.pkg",
                                          "run /usr/sbin/pkgutil --check-signature "
                                          "/var/db/halvo/install-staging/incoming.pkg",
                                          "log: package trusted: Developer ID Installer: Halvo Audio (QX4TRM2ZL9)",
                                          "runningSomewhereFlags",  //
                                          "removeTree /var/db/halvo/install-staging"));
}

TEST_F(InstallRefusalTest, ADowngradeIsRefusedAfterThreeFreshReadingsOfTheInstalledVersion) {
  bench_.installedVersions = {"3.0", "3.1", "3.2"};

  EXPECT_EQ(bench_.run(), InstallResult(InstallDowngrade{.installed = "3.2", .incoming = "2.0"}));

  EXPECT_THAT(bench_.calls(),
              ElementsAre("makePrivateDir /var/db/halvo/install-staging 700",
                          "stageFile /Users/ada/Halvo 2.pkg -> "
                          "/var/db/halvo/install-staging/incoming.pkg",
                          "run /usr/sbin/pkgutil --check-signature "
                          "/var/db/halvo/install-staging/incoming.pkg",
                          "log: package trusted: Developer ID Installer: Halvo Audio (QX4TRM2ZL9)",
                          "runningSomewhereFlags",   //
                          "installedDriverVersion",  //
                          "installedDriverVersion", "log: refusing downgrade: installed=3.1 incoming=2.0",
                          "installedDriverVersion",  //
                          "removeTree /var/db/halvo/install-staging"));
}

TEST_F(InstallRefusalTest, AnInstalledVersionThatVanishesMeanwhileIsReportedAsUnknown) {
  bench_.installedVersions = {"3.0", std::nullopt};

  EXPECT_EQ(bench_.run(), InstallResult(InstallDowngrade{.installed = "", .incoming = "2.0"}));

  EXPECT_THAT(bench_.calls(), Contains("log: refusing downgrade: installed=? incoming=2.0"));
}

TEST_F(InstallRefusalTest, AManifestWithoutAVersionCountsAsVersionZero) {
  bench_.manifest = "[]";

  EXPECT_EQ(bench_.run(), InstallResult(InstallDowngrade{.installed = "1.0", .incoming = "0"}));

  EXPECT_THAT(bench_.calls(), Contains("log: refusing downgrade: installed=1.0 incoming=0"));
}

TEST_F(InstallRefusalTest, AnEmptyManifestVersionIsPassedOnAsItIs) {
  bench_.manifest = R"({"driver_version":""})";

  EXPECT_EQ(bench_.run(), InstallResult(InstallDowngrade{.installed = "1.0", .incoming = ""}));
}

TEST_F(InstallRefusalTest, TextFromTheClientReachesTheLogAsItIs) {
  bench_.manifest = R"({"driver_version":"0\n1\",\"code\":\"ok"})";

  EXPECT_EQ(bench_.run(), InstallResult(InstallDowngrade{.installed = "1.0", .incoming = "0\n1\",\"code\":\"ok"}));

  EXPECT_THAT(bench_.calls(), Contains("log: refusing downgrade: installed=1.0 incoming=0\n1\",\"code\":\"ok"));
}

struct DistrustRow {
  const char* name;
  std::string report;
  HalvoPkgDistrust reason;
  const char* logLine;
};
void PrintTo(const DistrustRow& row, std::ostream* out) { *out << row.name; }

class DistrustTable : public InstallRefusalTest, public testing::WithParamInterface<DistrustRow> {};

TEST_P(DistrustTable, RefusesAndSaysWhy) {
  bench_.runner->replies = {{.code = 1, .output = GetParam().report}};

  EXPECT_EQ(bench_.run(true), InstallResult(InstallUntrustedPackage{GetParam().reason}));

  EXPECT_EQ(bench_.calls().at(3), GetParam().logLine);
  EXPECT_EQ(bench_.calls().back(), "removeTree /var/db/halvo/install-staging");
  EXPECT_EQ(bench_.calls().size(), 5U);
}

const std::string kSigned =
    "Status: signed by a developer certificate issued by Apple for distribution\n"
    "Notarization: trusted by the Apple notary service\n";

INSTANTIATE_TEST_SUITE_P(
    Reports, DistrustTable,
    testing::Values(DistrustRow{"no output", "\n ", HalvoPkgDistrust::unreadable,
                                "log: REFUSED untrusted package (unreadable): pkgutil rc=1, no output"},
                    DistrustRow{"missing tool", "spawn failed: No such file or directory", HalvoPkgDistrust::unsigned_,
                                "log: REFUSED untrusted package (unsigned): status: <none>"},
                    DistrustRow{"other kind of signature", "Status: signed by a certificate trusted by macOS\n",
                                HalvoPkgDistrust::notDeveloperID,
                                "log: REFUSED untrusted package (not_developer_id): status: signed by a certificate "
                                "trusted by macOS"},
                    DistrustRow{"two certificates", kSigned + "1. A\n2. B\n", HalvoPkgDistrust::chainTruncated,
                                "log: REFUSED untrusted package (chain_truncated): chain has 2 certificate(s)"},
                    DistrustRow{"other team", kSigned + "1. Developer ID Installer: Eve (AAAAAAAAAA)\n2. B\n3. C\n",
                                HalvoPkgDistrust::wrongTeam,
                                "log: REFUSED untrusted package (wrong_team): leaf: Developer ID Installer: Eve "
                                "(AAAAAAAAAA)"},
                    DistrustRow{"other authority",
                                kSigned + "1. Developer ID Installer: Halvo Audio (QX4TRM2ZL9)\n2. Mine\n3. C\n",
                                HalvoPkgDistrust::unknownAuthority,
                                "log: REFUSED untrusted package (unknown_authority): intermediate: Mine"}));

}  // namespace
}  // namespace halvo
