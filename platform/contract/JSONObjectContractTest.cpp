#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "platform/JSONObject.h"
#include "platform/contract/Repeated.h"

namespace halvo {
namespace {

using testing::Eq;
using testing::Optional;
using testing::TestParamInfo;
using testing::Values;

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();

// An object that holds one array in another; the object is the first level.
std::string nested(int levels) { return "{\"a\":" + repeated("[", levels - 1) + repeated("]", levels - 1) + "}"; }

struct ValueRow {
  const char* name;
  const char* json;  // of the member "v"
  JSONValue value;
};

class JSONMemberValue : public testing::TestWithParam<ValueRow> {};

TEST_P(JSONMemberValue, IsReadAs) {
  const auto object = halvoReadJSONObject(std::string("{\"v\":") + GetParam().json + "}");

  EXPECT_THAT(object, Optional(Eq(JSONObject{{"v", GetParam().value}})));
}

INSTANTIATE_TEST_SUITE_P(
    Table, JSONMemberValue,
    Values(ValueRow{"Integer", "6", std::int64_t{6}}, ValueRow{"WholeDecimal", "6.0", std::int64_t{6}},
           ValueRow{"WholeWithExponent", "6e0", std::int64_t{6}},
           ValueRow{"WholeByNegativeExponent", "60e-1", std::int64_t{6}}, ValueRow{"Negative", "-7", std::int64_t{-7}},
           ValueRow{"MinusZero", "-0", std::int64_t{0}}, ValueRow{"Fraction", "6.5", JSONOther{}},
           ValueRow{"LargestInteger", "9223372036854775807", kLargest},
           ValueRow{"SmallestInteger", "-9223372036854775808", kSmallest},
           ValueRow{"OneTooLarge", "9223372036854775808", JSONOther{}},
           ValueRow{"OneTooSmall", "-9223372036854775809", JSONOther{}}, ValueRow{"FarTooLarge", "1e300", JSONOther{}},
           ValueRow{"LargestIntegerAsDecimal", "9223372036854775807.0", kLargest},
           ValueRow{"WholeDecimalThatADoubleRounds", "9007199254740993.0", std::int64_t{9007199254740993}},
           ValueRow{"FractionThatADoubleDrops", "6.00000000000000000001", JSONOther{}},
           ValueRow{"FractionThatADoubleTakesForZero", "1e-400", JSONOther{}},
           ValueRow{"ZeroWithAHugeExponent", "0e99999999999999999999", std::int64_t{0}},
           ValueRow{"Text", "\"6\"", std::string("6")}, ValueRow{"EmptyText", "\"\"", std::string()},
           ValueRow{"True", "true", true}, ValueRow{"False", "false", false}, ValueRow{"Null", "null", JSONOther{}},
           ValueRow{"Array", "[1,\"x\"]", JSONOther{}}, ValueRow{"Object", "{\"v\":1}", JSONOther{}},
           ValueRow{"Escapes", R"("\"\\\/\b\f\n\r\t")", std::string("\"\\/\b\f\n\r\t")},
           ValueRow{"EscapedEmoji", R"("\ud83c\udfa7")", std::string("\U0001F3A7")},
           ValueRow{"PlainEmoji", "\"\U0001F3A7\"", std::string("\U0001F3A7")},
           ValueRow{"EscapedNul", R"("a\u0000b")", std::string("a\0b", 3)}),
    [](const TestParamInfo<ValueRow>& row) { return row.param.name; });

struct RefusedRow {
  const char* name;
  std::string text;
};

class JSONTextRefused : public testing::TestWithParam<RefusedRow> {};

TEST_P(JSONTextRefused, GivesNothing) { EXPECT_EQ(halvoReadJSONObject(GetParam().text), std::nullopt); }

INSTANTIATE_TEST_SUITE_P(
    Table, JSONTextRefused,
    Values(RefusedRow{"Empty", ""}, RefusedRow{"OnlyWhitespace", " \n"}, RefusedRow{"Number", "6"},
           RefusedRow{"Text", "\"a\""}, RefusedRow{"Null", "null"}, RefusedRow{"Array", "[]"},
           RefusedRow{"ArrayOfObjects", "[{\"a\":1}]"}, RefusedRow{"NoJSON", "hello"},
           RefusedRow{"CutShort", "{\"a\":1"}, RefusedRow{"TextAfterwards", "{} x"},
           RefusedRow{"SecondValueAfterwards", "{}{}"}, RefusedRow{"NulAfterwards", std::string("{}\0", 3)},
           RefusedRow{"NulAndMoreAfterwards", std::string("{}\0{", 4)},
           RefusedRow{"RawNulInText", std::string("{\"a\":\"\0\"}", 9)}, RefusedRow{"NaN", "{\"a\":NaN}"},
           RefusedRow{"Infinity", "{\"a\":-Infinity}"}, RefusedRow{"NumberBeyondDouble", "{\"a\":1e400}"},
           RefusedRow{"LeadingZero", "{\"a\":01}"}, RefusedRow{"PlusSign", "{\"a\":+1}"},
           RefusedRow{"SingleQuotes", "{'a':1}"}, RefusedRow{"NameWithoutQuotes", "{a:1}"},
           RefusedRow{"NoColon", "{\"a\" 1}"}, RefusedRow{"Comment", "{/**/}"},
           RefusedRow{"UnknownEscape", R"({"a":"\x41"})"}, RefusedRow{"LoneHighSurrogate", R"({"a":"\ud83c"})"},
           RefusedRow{"LoneLowSurrogate", R"({"a":"\udfa7"})"}, RefusedRow{"IllFormedUTF8InValue", "{\"a\":\"\xFF\"}"},
           RefusedRow{"IllFormedUTF8InName", "{\"\xC3\":1}"}, RefusedRow{"OverlongUTF8", "{\"a\":\"\xC0\xAF\"}"},
           RefusedRow{"SurrogateInUTF8", "{\"a\":\"\xED\xA0\x80\"}"},
           RefusedRow{"IllFormedUTF8BelowTheTop", "{\"a\":[\"\xFF\"]}"}, RefusedRow{"OneLevelTooDeep", nested(513)},
           RefusedRow{"FarTooDeep", nested(100'000)}, RefusedRow{"DeepAndNeverClosed", repeated("{\"a\":", 100'000)}),
    [](const TestParamInfo<RefusedRow>& row) { return row.param.name; });

TEST(JSONObjectContract, EmptyObjectHasNoMembers) {
  EXPECT_THAT(halvoReadJSONObject(" {} \n"), Optional(JSONObject{}));
}

TEST(JSONObjectContract, OfARepeatedNameTheLastValueCounts) {
  EXPECT_THAT(halvoReadJSONObject(R"({"a":1,"a":"two"})"), Optional(Eq(JSONObject{{"a", std::string("two")}})));
}

TEST(JSONObjectContract, RepeatedNameBelowTheTopDoesNotReachTheTop) {
  EXPECT_THAT(halvoReadJSONObject(R"({"a":1,"b":{"a":2}})"),
              Optional(Eq(JSONObject{{"a", std::int64_t{1}}, {"b", JSONOther{}}})));
}

TEST(JSONObjectContract, MemberAfterANestedValueKeepsItsName) {
  EXPECT_THAT(halvoReadJSONObject(R"({"b":{"c":[{"d":1}]},"a":true})"),
              Optional(Eq(JSONObject{{"a", true}, {"b", JSONOther{}}})));
}

TEST(JSONObjectContract, LeadingByteOrderMarkIsSkipped) {
  EXPECT_THAT(halvoReadJSONObject("\xEF\xBB\xBF{\"a\":1}"), Optional(Eq(JSONObject{{"a", std::int64_t{1}}})));
}

TEST(JSONObjectContract, FiveHundredAndTwelveLevelsAreRead) {
  EXPECT_THAT(halvoReadJSONObject(nested(512)), Optional(Eq(JSONObject{{"a", JSONOther{}}})));
}

TEST(JSONObjectContract, BracketsInsideTextsAreNoLevels) {
  const std::string text = repeated("[{", 1000);

  EXPECT_THAT(halvoReadJSONObject("{\"a\":\"" + text + "\"}"), Optional(Eq(JSONObject{{"a", text}})));
}

TEST(JSONObjectContract, TextOfManyMegabytesIsRead) {
  const std::string text(std::size_t{8} * 1024 * 1024, 'x');

  EXPECT_THAT(halvoReadJSONObject("{\"a\":\"" + text + "\"}"), Optional(Eq(JSONObject{{"a", text}})));
}

}  // namespace
}  // namespace halvo
