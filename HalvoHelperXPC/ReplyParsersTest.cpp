#include "HalvoHelperXPC/ReplyParsers.h"

#include <gtest/gtest.h>

#include <limits>

#include "HalvoHelperXPC/Constants.h"

namespace halvo {
namespace {

using Int64Limits = std::numeric_limits<std::int64_t>;
const auto rowName = [](const auto& row) { return row.param.name; };

struct MatchRow {
  const char* name;
  std::int64_t sent;
  std::int64_t helper;
  bool expected;
};

class VersionMatch : public testing::TestWithParam<MatchRow> {};

TEST_P(VersionMatch, IsExactEquality) {
  EXPECT_EQ(halvoHelperXPCVersionMatches(GetParam().sent, GetParam().helper), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Table, VersionMatch,
                         testing::Values(MatchRow{"Same", 6, 6, true}, MatchRow{"HelperNewer", 5, 6, false},
                                         MatchRow{"HelperOlder", 6, 5, false}, MatchRow{"Zero", 0, 0, true},
                                         MatchRow{"Opposite", 6, -6, false},
                                         MatchRow{"LowBitsAlike", 6, 6 + (std::int64_t{1} << 32), false}),
                         rowName);

struct SupportRow {
  const char* name;
  std::optional<std::int64_t> version;
  bool expected;
};

class AuthorizationSupport : public testing::TestWithParam<SupportRow> {};

TEST_P(AuthorizationSupport, BeginsWithVersionSix) {
  EXPECT_EQ(halvoHelperSupportsAuthorization(GetParam().version), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Table, AuthorizationSupport,
                         testing::Values(SupportRow{"Absent", std::nullopt, false}, SupportRow{"Zero", 0, false},
                                         SupportRow{"Five", 5, false}, SupportRow{"Six", 6, true},
                                         SupportRow{"Seven", 7, true}, SupportRow{"Largest", Int64Limits::max(), true},
                                         SupportRow{"Negative", -6, false},
                                         SupportRow{"Smallest", Int64Limits::min(), false}),
                         rowName);

struct UnauthorizedRow {
  const char* name;
  std::optional<std::string> reply;
  bool expected;
};

class UnauthorizedReply : public testing::TestWithParam<UnauthorizedRow> {};

TEST_P(UnauthorizedReply, IsRecognisedByItsCode) {
  EXPECT_EQ(halvoIsUnauthorizedReply(GetParam().reply), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Table, UnauthorizedReply,
    testing::Values(UnauthorizedRow{"TheReplyItself", std::string(kHalvoUnauthorizedReplyJSON), true},
                    UnauthorizedRow{"WithOtherMembers", R"({"code":"unauthorized","x":1})", true},
                    UnauthorizedRow{"WithBlanks", "\n { \"code\" : \"unauthorized\" } \n", true},
                    UnauthorizedRow{"WithAnEscapedLetter", R"({"code":"\u0075nauthorized"})", true},
                    UnauthorizedRow{"Absent", std::nullopt, false}, UnauthorizedRow{"Empty", "", false},
                    UnauthorizedRow{"Null", "null", false}, UnauthorizedRow{"NoMembers", "{}", false},
                    UnauthorizedRow{"OtherCase", R"({"code":"Unauthorized"})", false},
                    UnauthorizedRow{"OtherCaseOfTheKey", R"({"Code":"unauthorized"})", false},
                    UnauthorizedRow{"Number", R"({"code":1})", false},
                    UnauthorizedRow{"Boolean", R"({"code":true})", false},
                    UnauthorizedRow{"NullCode", R"({"code":null})", false},
                    UnauthorizedRow{"OtherCode", R"({"code":"ok"})", false},
                    UnauthorizedRow{"MoreBehind", R"({"code":"unauthorized "})", false},
                    UnauthorizedRow{"NulBehind", R"({"code":"unauthorized\u0000"})", false},
                    UnauthorizedRow{"Array", R"(["code","unauthorized"])", false},
                    UnauthorizedRow{"ArrayOfIt", R"([{"code":"unauthorized"}])", false},
                    UnauthorizedRow{"Nested", R"({"a":{"code":"unauthorized"}})", false},
                    UnauthorizedRow{"BareText", R"("unauthorized")", false},
                    UnauthorizedRow{"Cut", R"({"code":"unauthorized")", false},
                    UnauthorizedRow{"TextBehind", R"({"code":"unauthorized"}x)", false},
                    UnauthorizedRow{"IllFormedText", "{\"code\":\"unauthorized\",\"x\":\"\xFF\"}", false}),
    rowName);

struct VersionRow {
  const char* name;
  std::optional<std::string> reply;
  std::optional<std::int64_t> expected;
};

class HelperVersion : public testing::TestWithParam<VersionRow> {};

TEST_P(HelperVersion, IsTheWholeNumberOfThePingReply) {
  EXPECT_EQ(halvoParseHelperVersion(GetParam().reply), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Table, HelperVersion,
    testing::Values(VersionRow{"PingReply", R"({"ok":true,"helper_version":6,"build_abi":1})", 6},
                    VersionRow{"WholeFraction", R"({"helper_version":6.0})", 6},
                    VersionRow{"WholeExponent", R"({"helper_version":6e0})", 6},
                    VersionRow{"Negative", R"({"helper_version":-1})", -1},
                    VersionRow{"Largest", R"({"helper_version":9223372036854775807})", Int64Limits::max()},
                    VersionRow{"Smallest", R"({"helper_version":-9223372036854775808})", Int64Limits::min()},
                    VersionRow{"TooLarge", R"({"helper_version":9223372036854775808})", std::nullopt},
                    VersionRow{"Fraction", R"({"helper_version":6.5})", std::nullopt},
                    VersionRow{"Text", R"({"helper_version":"6"})", std::nullopt},
                    VersionRow{"True", R"({"helper_version":true})", std::nullopt},
                    VersionRow{"False", R"({"helper_version":false})", std::nullopt},
                    VersionRow{"Null", R"({"helper_version":null})", std::nullopt},
                    VersionRow{"Array", R"({"helper_version":[6]})", std::nullopt},
                    VersionRow{"Object", R"({"helper_version":{"helper_version":6}})", std::nullopt},
                    VersionRow{"MissingKey", R"({"ok":true})", std::nullopt},
                    VersionRow{"Unauthorized", std::string(kHalvoUnauthorizedReplyJSON), std::nullopt},
                    VersionRow{"BareNumber", "6", std::nullopt}, VersionRow{"TopLevelArray", "[6]", std::nullopt},
                    VersionRow{"Empty", "", std::nullopt}, VersionRow{"Blank", " ", std::nullopt},
                    VersionRow{"NoJson", "helper_version: 6", std::nullopt},
                    VersionRow{"Cut", R"({"helper_version":6)", std::nullopt},
                    VersionRow{"Absent", std::nullopt, std::nullopt}),
    rowName);

}  // namespace
}  // namespace halvo
