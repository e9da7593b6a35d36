#include "HalvoHelper/install/Versions.h"

#include <gtest/gtest.h>

#include <ostream>

namespace halvo {
namespace {

constexpr auto kLower = ComparisonResult::orderedAscending;
constexpr auto kSame = ComparisonResult::orderedSame;
constexpr auto kHigher = ComparisonResult::orderedDescending;

struct VersionRow {
  const char* a;
  const char* b;
  ComparisonResult expected;
};
void PrintTo(const VersionRow& row, std::ostream* out) { *out << '"' << row.a << "\" against \"" << row.b << '"'; }

class VersionOrder : public testing::TestWithParam<VersionRow> {};

TEST_P(VersionOrder, IsNumericPieceByPiece) {
  EXPECT_EQ(halvoCompareVersions(GetParam().a, GetParam().b), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(MissingPiecesAreZero, VersionOrder,
                         testing::Values(VersionRow{"1.2", "1.2.0", kSame}, VersionRow{"1.2.0.0", "1.2", kSame},
                                         VersionRow{"1.2", "1.2.0.0.1", kLower}, VersionRow{"", "0", kSame},
                                         VersionRow{"", "", kSame}, VersionRow{"...", "", kSame},
                                         VersionRow{"", "0.0.1", kLower}, VersionRow{"1", "", kHigher},
                                         VersionRow{"1", "1.-1", kHigher}));

INSTANTIATE_TEST_SUITE_P(NumbersNotText, VersionOrder,
                         testing::Values(VersionRow{"1.10", "1.9", kHigher}, VersionRow{"1.9", "1.10", kLower},
                                         VersionRow{"1.007", "1.7", kSame}, VersionRow{"+3", "3", kSame},
                                         VersionRow{"2.0", "1.99.99", kHigher}, VersionRow{"1.2.3", "1.2.4", kLower}));

INSTANTIATE_TEST_SUITE_P(EmptyPiecesDoNotCount, VersionOrder,
                         testing::Values(VersionRow{"1..2", "1.2", kSame}, VersionRow{".1.2.", "1.2", kSame},
                                         VersionRow{"1..3", "1.2.3", kHigher}));

INSTANTIATE_TEST_SUITE_P(TextCountsAsZero, VersionOrder,
                         testing::Values(VersionRow{"abc", "0.0", kSame}, VersionRow{"2.0-rc1", "2.0", kSame},
                                         VersionRow{"2.1rc", "2.0", kSame}, VersionRow{"1.2-beta", "1.0", kSame},
                                         VersionRow{"7b", "0", kSame}, VersionRow{"1. 2", "1.0", kSame},
                                         VersionRow{" 1", "0", kSame}, VersionRow{"++3", "0", kSame},
                                         VersionRow{"+-3", "0", kSame}, VersionRow{"-+3", "0", kSame},
                                         VersionRow{"--3", "0", kSame}, VersionRow{"+", "0", kSame},
                                         VersionRow{"-", "0", kSame}, VersionRow{"0x10", "0", kSame},
                                         VersionRow{"1e3", "0", kSame}, VersionRow{"\xD9\xA3", "0", kSame}));

INSTANTIATE_TEST_SUITE_P(NegativePiecesAreKept, VersionOrder,
                         testing::Values(VersionRow{"1.-1", "1.0", kLower}, VersionRow{"-2", "0", kLower},
                                         VersionRow{"-2", "-3", kHigher}, VersionRow{"-0", "0", kSame}));

INSTANTIATE_TEST_SUITE_P(SixtyFourBitsAtMost, VersionOrder,
                         testing::Values(VersionRow{"9223372036854775807", "9223372036854775806", kHigher},
                                         VersionRow{"9223372036854775808", "0", kSame},
                                         VersionRow{"-9223372036854775808", "-9223372036854775807", kLower},
                                         VersionRow{"-9223372036854775809", "0", kSame},
                                         VersionRow{"12345678901234567890", "0", kSame},
                                         VersionRow{"00000000000000000000000000000007", "7", kSame}));

TEST(ComparisonResultTest, RawValuesAreThoseOfThePlatform) {
  EXPECT_EQ(static_cast<int>(kLower), -1);
  EXPECT_EQ(static_cast<int>(kSame), 0);
  EXPECT_EQ(static_cast<int>(kHigher), 1);
}

struct DowngradeRow {
  std::optional<std::string> installed;
  const char* incoming;
  DowngradeDecision expected;
};
void PrintTo(const DowngradeRow& row, std::ostream* out) {
  *out << row.installed.value_or("nothing") << " <- \"" << row.incoming << '"';
}

class DowngradeTable : public testing::TestWithParam<DowngradeRow> {};

TEST_P(DowngradeTable, NeverLowersTheInstalledVersion) {
  EXPECT_EQ(halvoDowngradeDecision(GetParam().installed, GetParam().incoming), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Decisions, DowngradeTable,
                         testing::Values(DowngradeRow{std::nullopt, "1.0", DowngradeDecision::install},
                                         DowngradeRow{std::nullopt, "", DowngradeDecision::install},
                                         DowngradeRow{std::nullopt, "-5", DowngradeDecision::install},
                                         DowngradeRow{"", "0", DowngradeDecision::install},
                                         DowngradeRow{"", "-5", DowngradeDecision::install},
                                         DowngradeRow{"1.4.2", "1.4.2", DowngradeDecision::overwrite},
                                         DowngradeRow{"1.4.2", "1.4.10", DowngradeDecision::overwrite},
                                         DowngradeRow{"abc", "0", DowngradeDecision::overwrite},
                                         DowngradeRow{"1.4.10", "1.4.2", DowngradeDecision::refuse},
                                         DowngradeRow{"1.0", "", DowngradeDecision::refuse},
                                         DowngradeRow{"0.1", "0", DowngradeDecision::refuse}));

struct ManifestRow {
  const char* manifest;
  std::optional<std::string> expected;
};
void PrintTo(const ManifestRow& row, std::ostream* out) { *out << row.manifest; }

class ManifestTable : public testing::TestWithParam<ManifestRow> {};

TEST_P(ManifestTable, NamesADriverVersionOrNot) {
  EXPECT_EQ(halvoParseManifestDriverVersion(GetParam().manifest), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    GivesTheText, ManifestTable,
    testing::Values(ManifestRow{R"({"driver_version":"1.2.3"})", "1.2.3"}, ManifestRow{R"({"driver_version":""})", ""},
                    ManifestRow{R"({"driver_version":" 1.2 "})", " 1.2 "},
                    ManifestRow{R"({"driver_version":"1\",\"code\":\"ok"})", R"(1","code":"ok)"},
                    ManifestRow{R"({"name":["x"],"driver_version":"2","extra":{"driver_version":"9"}})", "2"}));

INSTANTIATE_TEST_SUITE_P(GivesNothing, ManifestTable,
                         testing::Values(ManifestRow{R"({"driver_version":123})", std::nullopt},
                                         ManifestRow{R"({"driver_version":1.2})", std::nullopt},
                                         ManifestRow{R"({"driver_version":true})", std::nullopt},
                                         ManifestRow{R"({"driver_version":null})", std::nullopt},
                                         ManifestRow{R"({"driver_version":["1.2"]})", std::nullopt},
                                         ManifestRow{R"({"driver_version":{"x":"1.2"}})", std::nullopt},
                                         ManifestRow{R"({"Driver_Version":"1.2"})", std::nullopt},  //
                                         ManifestRow{"{}", std::nullopt},                           //
                                         ManifestRow{R"([{"driver_version":"1.2"}])", std::nullopt},
                                         ManifestRow{R"("driver_version")", std::nullopt},  //
                                         ManifestRow{"7", std::nullopt},                    //
                                         ManifestRow{"", std::nullopt},                     //
                                         ManifestRow{" \n", std::nullopt},                  //
                                         ManifestRow{R"({"driver_version":"1.2")", std::nullopt},
                                         ManifestRow{R"({"driver_version":"1.2"} x)", std::nullopt},
                                         ManifestRow{"{\"driver_version\":\"1.\xFF\"}", std::nullopt}));

TEST(ManifestTest, ANulInTheTextHidesNothingAfterIt) {
  const std::string manifest = std::string(R"({"driver_version":"9"})") + '\0' + "}";

  EXPECT_EQ(halvoParseManifestDriverVersion(manifest), std::nullopt);
}

TEST(ManifestTest, DeepNestingIsRefusedWithoutHarm) {
  const std::string manifest = R"({"driver_version":"9","x":)" + std::string(100'000, '[');

  EXPECT_EQ(halvoParseManifestDriverVersion(manifest), std::nullopt);
}

TEST(ManifestTest, HugeManifestIsReadLikeASmallOne) {
  const std::string manifest = R"({"notes":")" + std::string(8'000'000, 'n') + R"(","driver_version":"3.1"})";

  EXPECT_EQ(halvoParseManifestDriverVersion(manifest), "3.1");
}

}  // namespace
}  // namespace halvo
