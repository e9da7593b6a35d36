#include "HalvoHelper/removal/AppBundleGuard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

bool always(const std::string&) { return true; }
bool never(const std::string&) { return false; }

// ---- The path as given

struct PathRow {
  const char* name;
  std::string path;
  bool accepted;
};

class BundlePath : public testing::TestWithParam<PathRow> {};

TEST_P(BundlePath, IsJudgedByItsTextWhenTheMarkersAreThere) {
  EXPECT_EQ(halvoValidateAppBundlePath(GetParam().path, always), GetParam().accepted);
}

INSTANTIATE_TEST_SUITE_P(Accepted, BundlePath,
                         testing::Values(PathRow{"Applications", "/Applications/Halvo.app", true},
                                         PathRow{"Root", "/Halvo.app", true},
                                         PathRow{"TrailingSlash", "/Users/someone/Halvo.app/", true},
                                         PathRow{"ManyTrailingSlashes", "/Applications/Halvo.app////", true},
                                         PathRow{"DoubledSlashes", "//Applications///Halvo.app", true},
                                         PathRow{"Nested", "/Volumes/Disk/Applications/Utilities/Halvo.app", true},
                                         PathRow{"BlankInFolder", "/Users/Jane Doe/Halvo.app", true},
                                         PathRow{"QuoteInFolder", "/Users/\"x\"/Halvo.app", true},
                                         PathRow{"LineFeedInFolder", "/Users/a\nb/Halvo.app", true},
                                         PathRow{"NonASCIIFolder", "/Users/Zo\xC3\xAB/Halvo.app", true},
                                         PathRow{"SingleDot", "/Applications/./Halvo.app", true},
                                         PathRow{"HiddenFolder", "/Applications/.hidden/Halvo.app", true},
                                         PathRow{"InsideItself", "/Applications/Halvo.app/Halvo.app", true},
                                         PathRow{"VeryLong", "/" + std::string(5000, 'x') + "/Halvo.app", true}),
                         [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Refused, BundlePath,
    testing::Values(
        PathRow{"Empty", "", false}, PathRow{"OnlySlash", "/", false}, PathRow{"OnlySlashes", "///", false},
        PathRow{"Relative", "Applications/Halvo.app", false}, PathRow{"JustTheName", "Halvo.app", false},
        PathRow{"DotRelative", "./Halvo.app", false}, PathRow{"Tilde", "~/Halvo.app", false},
        PathRow{"LeadingBlank", " /Applications/Halvo.app", false},
        PathRow{"URL", "file:///Applications/Halvo.app", false},
        PathRow{"ParentStep", "/Applications/../Applications/Halvo.app", false},
        PathRow{"ParentStepAtEnd", "/Applications/Halvo.app/..", false},
        PathRow{"ParentStepAtStart", "/../Applications/Halvo.app", false},
        PathRow{"ParentStepBehind", "/Applications/Halvo.app/../Halvo.app", false},
        PathRow{"TwoDotsInName", "/Applications/Halvo..app", false},
        PathRow{"TwoDotsInFolder", "/Appli..cations/Halvo.app", false}, PathRow{"ThreeDots", "/.../Halvo.app", false},
        PathRow{"Copy", "/Applications/Halvo copy.app", false}, PathRow{"LowerCase", "/Applications/halvo.app", false},
        PathRow{"UpperCase", "/Applications/HALVO.APP", false},
        PathRow{"UpperCaseExtension", "/Applications/Halvo.App", false},
        PathRow{"NoExtension", "/Applications/Halvo", false},
        PathRow{"OtherExtension", "/Applications/Halvo.application", false},
        PathRow{"TrailingBlank", "/Applications/Halvo.app ", false},
        PathRow{"TrailingLineFeed", "/Applications/Halvo.app\n", false},
        PathRow{"TrailingTab", "/Applications/Halvo.app\t", false},
        PathRow{"TrailingDot", "/Applications/Halvo.app.", false},
        PathRow{"DotAsLastComponent", "/Applications/Halvo.app/.", false},
        PathRow{"PrefixedName", "/Applications/MyHalvo.app", false},
        PathRow{"BlankInFrontOfName", "/Applications/ Halvo.app", false},
        PathRow{"BelowTheBundle", "/Applications/Halvo.app/Contents", false},
        PathRow{"Executable", "/Applications/Halvo.app/Contents/MacOS/halvo-app", false},
        PathRow{"Applications", "/Applications", false}, PathRow{"ApplicationsSlash", "/Applications/", false},
        PathRow{"System", "/System/Library", false}, PathRow{"OtherApplication", "/Applications/Safari.app", false},
        PathRow{"BackslashName", "\\Applications\\Halvo.app", false},
        PathRow{"BackslashBeforeName", "/Applications\\Halvo.app", false},
        PathRow{"QuotedName", "/Applications/\"Halvo.app\"", false},
        PathRow{"EscapedName", "/Applications/Halvo%2Eapp", false},
        PathRow{"CyrillicA", "/Applications/H\xD0\xB0lvo.app", false},
        PathRow{"CombiningMark", "/Applications/Halvo\xCC\x81.app", false},
        PathRow{"FullWidthDot",
                "/Applications/Halvo\xEF\xBC\x8E"
                "app",
                false},
        PathRow{"ZeroWidthSpace", "/Applications/Halvo.app\xE2\x80\x8B", false},
        PathRow{"IllFormedUTF8", "/Applications/Halvo.app\xFF", false},
        PathRow{"NulAtEnd", std::string("/Applications/Halvo.app\0", 24), false},
        PathRow{"NulBeforeName", std::string("/Applications/x\0/Halvo.app", 26), false},
        PathRow{"NulHidesTheTruth", std::string("/System\0/Halvo.app", 18), false},
        PathRow{"Glob", "/Applications/*/../Halvo.app", false},
        PathRow{"Semicolon", "/Applications/Halvo.app;rm -rf /", false},
        PathRow{"VeryLongName", "/" + std::string(5000, 'x') + "Halvo.app", false}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(AppBundleGuardTest, ARefusedTextIsNeverLookedUp) {
  std::vector<std::string> asked;
  const auto recording = [&](const std::string& path) {
    asked.push_back(path);
    return true;
  };

  EXPECT_FALSE(halvoValidateAppBundlePath("/Applications/../Applications/Halvo.app", recording));

  EXPECT_THAT(asked, IsEmpty());
}

TEST(AppBundleGuardTest, ABundleWithoutAnyMarkerIsRefused) {
  EXPECT_FALSE(halvoValidateAppBundlePath("/Applications/Halvo.app", never));
}

TEST(AppBundleGuardTest, TheMarkersAreAskedForInTheirOrder) {
  std::vector<std::string> asked;
  const auto recording = [&](const std::string& path) {
    asked.push_back(path);
    return false;
  };

  EXPECT_FALSE(halvoValidateAppBundlePath("/Users/someone/Halvo.app/", recording));

  EXPECT_THAT(asked, ElementsAre("/Users/someone/Halvo.app/Contents/MacOS/halvo-helper",
                                 "/Users/someone/Halvo.app/Contents/MacOS/halvo-app",
                                 "/Users/someone/Halvo.app/Contents/MacOS/halvo-daemon"));
}

TEST(AppBundleGuardTest, OneMarkerSufficesAndEndsTheSearch) {
  std::vector<std::string> asked;
  const auto onlyTheApp = [&](const std::string& path) {
    asked.push_back(path);
    return path.ends_with("halvo-app");
  };

  EXPECT_TRUE(halvoValidateAppBundlePath("/Applications/Halvo.app", onlyTheApp));

  EXPECT_EQ(asked.size(), 2U);
}

// ---- The path with its links resolved

std::optional<std::string> resolve(const std::string& given, const std::optional<std::string>& resolved) {
  return halvoResolvedBundlePathIfSafe(given, [&](const std::string&) { return resolved; });
}

TEST(AppBundleGuardTest, ALinkToARealBundleGivesTheBundle) {
  EXPECT_EQ(resolve("/tmp/Halvo.app", "/Applications/Halvo.app"), "/Applications/Halvo.app");
}

TEST(AppBundleGuardTest, ThePathIsResolvedOnceAndAsGiven) {
  std::vector<std::string> asked;
  const auto recording = [&](const std::string& path) -> std::optional<std::string> {
    asked.push_back(path);
    return "/Applications/Halvo.app";
  };

  static_cast<void>(halvoResolvedBundlePathIfSafe("/tmp/Halvo.app/", recording));

  EXPECT_THAT(asked, ElementsAre("/tmp/Halvo.app/"));
}

struct ResolvedRow {
  const char* name;
  std::optional<std::string> resolved;
};

class UnsafeResolution : public testing::TestWithParam<ResolvedRow> {};

TEST_P(UnsafeResolution, IsRefusedAlthoughThePathAsGivenWasFine) {
  EXPECT_EQ(resolve("/tmp/Halvo.app", GetParam().resolved), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Table, UnsafeResolution,
                         testing::Values(ResolvedRow{"Vanished", std::nullopt}, ResolvedRow{"Empty", ""},
                                         ResolvedRow{"System", "/System/Library"}, ResolvedRow{"Root", "/"},
                                         ResolvedRow{"Relative", "Applications/Halvo.app"},
                                         ResolvedRow{"TwoDots", "/Applications/x..y/Halvo.app"},
                                         ResolvedRow{"OtherCase", "/Applications/halvo.app"},
                                         ResolvedRow{"OtherApplication", "/Applications/Safari.app"},
                                         ResolvedRow{"Nul", std::string("/Applications/\0/Halvo.app", 25)}),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace halvo
