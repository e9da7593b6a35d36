#include "sim/tools/SystemTools.h"

#include <gmock/gmock.h>

#include "sim/tools/FlatPackage.h"
#include "sim/tools/testing/ToolMachine.h"

namespace halvo::sim {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

constexpr const char* kFirstGeneration =
    "           7A FC 9D 01 A6 2F 03 A2 DE 96 37 93 6D 4A FE 68 09 0D 2D E1 8D 03\n"
    "           F2 9C 88 CF B0 B1 BA 63 58 7F\n";
constexpr const char* kSecondGeneration =
    "           F1 6C D3 C5 4C 7F 83 CE A4 BF 1A 3E 6A 08 19 C8 AA A8 E4 A1 52 8F\n"
    "           D1 44 71 5F 35 06 43 D2 DF 3A\n";
constexpr const char* kRoot =
    "           B0 B1 73 0E CB C7 FF 45 05 14 2C 49 F1 29 5E 6E DA 6B CA ED 7E 2C\n"
    "           68 C5 BE 91 B5 A1 10 01 F0 24\n";

ToolAnswer checkOf(const std::string& report) {
  const ToolMachine machine;
  return machine.run("pkgutil", {"--check-signature", machine.package("incoming", {.report = reportFile(report)})});
}

struct ReportRow {
  const char* name;
  const char* report;
  int status;
  const char* statusLine;
};

class SignatureReport : public testing::TestWithParam<ReportRow> {};

TEST_P(SignatureReport, IsPrintedAndItsStatusIsAnswered) {
  const ToolAnswer answer = checkOf(GetParam().report);

  EXPECT_EQ(answer.status, GetParam().status);
  EXPECT_THAT(answer.out,
              StartsWith(std::string("Package \"Halvo-incoming.pkg\":\n   Status: ") + GetParam().statusLine + "\n"));
  EXPECT_EQ(answer.err, "");
}

constexpr const char* kDistribution = "signed by a developer certificate issued by Apple for distribution";

INSTANTIATE_TEST_SUITE_P(
    Table, SignatureReport,
    testing::Values(ReportRow{"Good", "good.txt", 0, kDistribution},
                    ReportRow{"GoodOfTheSecondGeneration", "good-g2.txt", 0, kDistribution},
                    ReportRow{"Unsigned", "unsigned.txt", 1, "no signature"},
                    ReportRow{"NotNotarized", "not-notarized.txt", 0, kDistribution},
                    ReportRow{"WrongTeam", "wrong-team.txt", 0, kDistribution},
                    ReportRow{"ChainTruncated", "chain-truncated.txt", 0, kDistribution},
                    ReportRow{"UnknownAuthority", "unknown-authority.txt", 0, kDistribution},
                    ReportRow{"ApplicationCertificate", "application-certificate.txt", 0, kDistribution},
                    ReportRow{"Revoked", "revoked.txt", 1, "revoked signature"},
                    ReportRow{"Expired", "expired.txt", 1, "signed by a certificate that has since expired"}),
    [](const auto& row) { return row.param.name; });

TEST(SignatureReportTest, AGoodOneEndsInThePinnedCertificates) {
  EXPECT_THAT(checkOf("good.txt").out, HasSubstr(kFirstGeneration));
  EXPECT_THAT(checkOf("good.txt").out, HasSubstr(kRoot));
  EXPECT_THAT(checkOf("good-g2.txt").out, HasSubstr(kSecondGeneration));
  EXPECT_THAT(checkOf("good-g2.txt").out, HasSubstr(kRoot));
}

TEST(SignatureReportTest, AGoodOneIsNotarizedAndNamesTheMaker) {
  EXPECT_THAT(checkOf("good.txt").out, HasSubstr("\n   Notarization: trusted by the Apple notary service\n"));
  EXPECT_THAT(checkOf("good.txt").out, HasSubstr("\n    1. Developer ID Installer: Halvo Audio (QX4TRM2ZL9)\n"));
}

TEST(SignatureReportTest, EachBadOneIsBadInItsWay) {
  EXPECT_THAT(checkOf("not-notarized.txt").out, Not(HasSubstr("Notarization:")));
  EXPECT_THAT(checkOf("wrong-team.txt").out, Not(HasSubstr("QX4TRM2ZL9")));
  EXPECT_THAT(checkOf("chain-truncated.txt").out, Not(HasSubstr("    3. ")));
  EXPECT_THAT(checkOf("unknown-authority.txt").out, Not(HasSubstr(kFirstGeneration)));
  EXPECT_THAT(checkOf("application-certificate.txt").out, HasSubstr("    1. Developer ID Application: Halvo Audio"));
}

TEST(PkgutilToolTest, TheReportNamesTheFileAsItIsCalledNow) {
  const ToolMachine machine;
  std::filesystem::copy_file(machine.package("1.2.0"), machine.beside("other name.pkg"));

  EXPECT_THAT(machine.run("pkgutil", {"--check-signature", machine.beside("other name.pkg")}).out,
              StartsWith("Package \"other name.pkg\":\n   Status: signed"));
}

TEST(PkgutilToolTest, APackageWithoutAReportHasNoSignature) {
  const ToolMachine machine;

  EXPECT_EQ(machine.run("pkgutil", {"--check-signature", machine.packageOf({})}),
            (ToolAnswer{.status = 1, .out = "Package \"any.pkg\":\n   Status: no signature\n", .err = ""}));
}

TEST(PkgutilToolTest, AStatusElsewhereThanInItsLineIsNoSignature) {
  const ToolMachine machine;
  const std::string report =
      machine.file("report", "Package \"   Status: signed Apple Software\":\n   Certificate Chain:\n");

  EXPECT_EQ(machine.run("pkgutil", {"--check-signature", machine.package("1", {.report = report})}).status, 1);
}

TEST(PkgutilToolTest, AnEmptyReportLeavesTheFirstLine) {
  const ToolMachine machine;

  EXPECT_EQ(machine.run("pkgutil", {"--check-signature", machine.package("1", {.report = machine.file("report", "")})}),
            (ToolAnswer{.status = 1, .out = "Package \"Halvo-1.pkg\":\n", .err = ""}));
}

TEST(PkgutilToolTest, AFileThatIsNoPackageIsInvalid) {
  const ToolMachine machine;

  const ToolAnswer answer = machine.run("pkgutil", {"--check-signature", machine.file("x.pkg", "no package")});

  EXPECT_EQ(answer.status, 1);
  EXPECT_EQ(answer.out, "");
  EXPECT_THAT(answer.err, MatchesRegex("Package \"x.pkg\":\n   Status: package is invalid \\(.+\\)\n"));
}

TEST(PkgutilToolTest, APackageThatIsNotThereIsNamed) {
  const ToolMachine machine;

  EXPECT_EQ(machine.run("pkgutil", {"--check-signature", "/nowhere.pkg"}),
            (ToolAnswer{.status = 1, .out = "", .err = "Package does not exist: /nowhere.pkg\n"}));
}

TEST(PkgutilToolTest, InstalledPackagesAreListed) {
  const ToolMachine machine;
  machine.install(machine.package("1.2.0"));
  machine.file("root/private/var/db/receipts/com.example.other.plist", "");

  EXPECT_EQ(machine.run("pkgutil", {"--pkgs"}).out, "com.example.other\ncom.halvo.pkg\n");
}

TEST(PkgutilToolTest, AFreshMachineListsNothing) {
  const ToolMachine machine;

  EXPECT_EQ(machine.run("pkgutil", {"--pkgs"}), (ToolAnswer{.status = 0, .out = "", .err = ""}));
}

TEST(PkgutilToolTest, AForgottenPackageHasNoReceipt) {
  const ToolMachine machine;
  machine.install(machine.package("1.2.0"));

  EXPECT_EQ(machine.run("pkgutil", {"--forget", "com.halvo.pkg"}),
            (ToolAnswer{.status = 0, .out = "Forgot package 'com.halvo.pkg' on '/'.\n", .err = ""}));

  EXPECT_TRUE(std::filesystem::is_empty(machine.root() / "private/var/db/receipts"));
}

TEST(PkgutilToolTest, AnUnknownPackageCannotBeForgotten) {
  const ToolMachine machine;

  EXPECT_EQ(machine.run("pkgutil", {"--forget", "com.halvo.pkg"}),
            (ToolAnswer{.status = 1, .out = "", .err = "No receipt for 'com.halvo.pkg' found at '/'.\n"}));
}

class PkgutilUsage : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(PkgutilUsage, IsPrintedForOtherArguments) {
  const ToolMachine machine;

  EXPECT_EQ(
      machine.run("pkgutil", GetParam()),
      (ToolAnswer{.status = 1, .out = "", .err = "Usage: pkgutil --check-signature PATH | --forget PKGID | --pkgs\n"}));
}

INSTANTIATE_TEST_SUITE_P(Table, PkgutilUsage,
                         testing::Values(std::vector<std::string>{}, std::vector<std::string>{"--check-signature"},
                                         std::vector<std::string>{"--forget", "a", "b"},
                                         std::vector<std::string>{"--expand", "a"}));

}  // namespace
}  // namespace halvo::sim
