#include "HalvoHelper/security/PkgVerifier.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/testing/ScriptedProcessRunner.h"
#include "HalvoHelper/testing/SignatureReports.h"

namespace halvo {
namespace {

using testing::ElementsAre;

constexpr const char* kStaged = "/var/db/halvo/install-staging/incoming.pkg";

HalvoPkgTrust verdictOn(ProcessResult result) {
  const auto runner = std::make_shared<ScriptedProcessRunner>();
  runner->replies = {std::move(result)};
  return PkgVerifier(runner).verify(kStaged, "QX4TRM2ZL9");
}

TEST(PkgVerifierTest, RunsTheToolOnceWithThePathAsOneArgument) {
  const auto runner = std::make_shared<ScriptedProcessRunner>();

  PkgVerifier(runner).verify("/a b/-x\".pkg", "QX4TRM2ZL9");

  EXPECT_THAT(runner->runs, ElementsAre(ElementsAre("/usr/sbin/pkgutil", "--check-signature", "/a b/-x\".pkg")));
}

TEST(PkgVerifierTest, TrustsAGoodReport) {
  EXPECT_EQ(verdictOn({0, std::string(kGoodSignatureReport)}),
            HalvoPkgTrust(Trusted{"Developer ID Installer: Halvo Audio (QX4TRM2ZL9)"}));
}

TEST(PkgVerifierTest, TrustsAGoodReportWhateverTheExitStatus) {
  EXPECT_EQ(verdictOn({1, std::string(kGoodSignatureReport)}),
            HalvoPkgTrust(Trusted{"Developer ID Installer: Halvo Audio (QX4TRM2ZL9)"}));
}

TEST(PkgVerifierTest, DemandsTheTeamItIsGiven) {
  const auto runner = std::make_shared<ScriptedProcessRunner>();
  runner->replies = {{0, std::string(kGoodSignatureReport)}};

  EXPECT_EQ(
      PkgVerifier(runner).verify(kStaged, "ABCDE12345"),
      HalvoPkgTrust(Distrusted{HalvoPkgDistrust::wrongTeam, "leaf: Developer ID Installer: Halvo Audio (QX4TRM2ZL9)"}));
}

struct UnreadableRow {
  const char* name;
  ProcessResult result;
  const char* detail;
};

class SilentTool : public testing::TestWithParam<UnreadableRow> {};

TEST_P(SilentTool, LeavesThePackageUnreadable) {
  EXPECT_EQ(verdictOn(GetParam().result), HalvoPkgTrust(Distrusted{HalvoPkgDistrust::unreadable, GetParam().detail}));
}

INSTANTIATE_TEST_SUITE_P(
    Table, SilentTool,
    testing::Values(UnreadableRow{"Success", {0, ""}, "pkgutil rc=0, no output"},
                    UnreadableRow{"Failure", {1, ""}, "pkgutil rc=1, no output"},
                    UnreadableRow{"Signal", {9, ""}, "pkgutil rc=9, no output"},
                    UnreadableRow{"NotStarted", {-1, ""}, "pkgutil rc=-1, no output"},
                    UnreadableRow{"LineFeeds", {0, "\n\n"}, "pkgutil rc=0, no output"},
                    UnreadableRow{"BlanksAndTabs", {3, " \t \r\n "}, "pkgutil rc=3, no output"},
                    UnreadableRow{"OtherWhitespace", {0, "\xC2\xA0\xE2\x80\xA9\v\f"}, "pkgutil rc=0, no output"}),
    [](const auto& row) { return row.param.name; });

TEST(PkgVerifierTest, TakesAToolThatCouldNotBeStartedForNoSignature) {
  EXPECT_EQ(verdictOn({-1, "spawn failed: No such file or directory"}),
            HalvoPkgTrust(Distrusted{HalvoPkgDistrust::unsigned_, "status: <none>"}));
}

TEST(PkgVerifierTest, ReadsTheOutputAsItIs) {
  EXPECT_EQ(verdictOn({0, "\n\n  Status: no signature  \n\n"}),
            HalvoPkgTrust(Distrusted{HalvoPkgDistrust::unsigned_, "status: no signature"}));
}

}  // namespace
}  // namespace halvo
