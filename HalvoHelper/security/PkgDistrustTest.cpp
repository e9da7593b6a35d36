#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string_view>

#include "HalvoHelper/security/PkgTrust.h"

namespace halvo {
namespace {

using enum HalvoPkgDistrust;

struct RawValueRow {
  const char* name;
  HalvoPkgDistrust reason;
  std::string_view rawValue;
};

class Distrust : public testing::TestWithParam<RawValueRow> {};

TEST_P(Distrust, HasItsRawValue) { EXPECT_EQ(halvoRawValue(GetParam().reason), GetParam().rawValue); }

TEST_P(Distrust, ComesBackFromItsRawValue) {
  EXPECT_EQ(halvoPkgDistrustFromRawValue(GetParam().rawValue), GetParam().reason);
}

INSTANTIATE_TEST_SUITE_P(Table, Distrust,
                         testing::Values(RawValueRow{"Unreadable", unreadable, "unreadable"},
                                         RawValueRow{"Unsigned", unsigned_, "unsigned"},
                                         RawValueRow{"NotNotarized", notNotarized, "not_notarized"},
                                         RawValueRow{"NotDeveloperID", notDeveloperID, "not_developer_id"},
                                         RawValueRow{"WrongTeam", wrongTeam, "wrong_team"},
                                         RawValueRow{"ChainTruncated", chainTruncated, "chain_truncated"},
                                         RawValueRow{"UnknownAuthority", unknownAuthority, "unknown_authority"},
                                         RawValueRow{"StagingFailed", stagingFailed, "staging_failed"}),
                         [](const auto& row) { return row.param.name; });

TEST(DistrustTest, HasEightReasonsInTheirOrder) {
  EXPECT_THAT(kHalvoPkgDistrustRawValues,
              testing::ElementsAre("unreadable", "unsigned", "not_notarized", "not_developer_id", "wrong_team",
                                   "chain_truncated", "unknown_authority", "staging_failed"));
}

struct OtherRow {
  const char* name;
  std::string_view text;
};

class OtherText : public testing::TestWithParam<OtherRow> {};

TEST_P(OtherText, IsNoReason) { EXPECT_EQ(halvoPkgDistrustFromRawValue(GetParam().text), std::nullopt); }

INSTANTIATE_TEST_SUITE_P(Table, OtherText,
                         testing::Values(OtherRow{"Empty", ""}, OtherRow{"OtherCase", "Unsigned"},
                                         OtherRow{"CaseName", "unsigned_"}, OtherRow{"TrailingBlank", "unsigned "},
                                         OtherRow{"LeadingBlank", " unsigned"}, OtherRow{"CamelCase", "wrongTeam"},
                                         OtherRow{"Cut", "staging_faile"}, OtherRow{"NoReasonAtAll", "trusted"},
                                         OtherRow{"TrailingNul", std::string_view("unsigned\0", 9)}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace halvo
