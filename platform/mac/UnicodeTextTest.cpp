#include "platform/mac/UnicodeText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct PairRow {
  const char* name;
  std::string utf8;
  std::vector<std::uint16_t> utf16;
};

std::string pairName(const testing::TestParamInfo<PairRow>& info) { return info.param.name; }

class UnicodePair : public testing::TestWithParam<PairRow> {};

TEST_P(UnicodePair, GoesFromUTF8ToUTF16) { EXPECT_EQ(utf16FromUTF8(GetParam().utf8), GetParam().utf16); }

TEST_P(UnicodePair, GoesFromUTF16ToUTF8) { EXPECT_EQ(utf8FromUTF16(GetParam().utf16), GetParam().utf8); }

TEST_P(UnicodePair, IsWellFormed) { EXPECT_TRUE(isWellFormedUTF8(GetParam().utf8)); }

INSTANTIATE_TEST_SUITE_P(Table, UnicodePair,
                         testing::Values(PairRow{"Empty", "", {}}, PairRow{"ASCII", "aZ~", {0x61, 0x5A, 0x7E}},
                                         PairRow{"EmbeddedNul", std::string("a\0b", 3), {0x61, 0, 0x62}},
                                         PairRow{"LastOfOneByte", "\x7F", {0x7F}},
                                         PairRow{"FirstOfTwoBytes", "\xC2\x80", {0x80}},
                                         PairRow{"LastOfTwoBytes", "\xDF\xBF", {0x7FF}},
                                         PairRow{"FirstOfThreeBytes", "\xE0\xA0\x80", {0x800}},
                                         PairRow{"BelowTheSurrogates", "\xED\x9F\xBF", {0xD7FF}},
                                         PairRow{"AboveTheSurrogates", "\xEE\x80\x80", {0xE000}},
                                         PairRow{"ByteOrderMark", "\xEF\xBB\xBFx", {0xFEFF, 0x78}},
                                         PairRow{"LastOfThreeBytes", "\xEF\xBF\xBF", {0xFFFF}},
                                         PairRow{"FirstOfFourBytes", "\xF0\x90\x80\x80", {0xD800, 0xDC00}},
                                         PairRow{"Emoji", "\xF0\x9F\x8E\xA7", {0xD83C, 0xDFA7}},
                                         PairRow{"LastCodePoint", "\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF}}),
                         pairName);

struct IllFormedRow {
  const char* name;
  std::string utf8;
  std::vector<std::uint16_t> utf16;
};

std::string illFormedName(const testing::TestParamInfo<IllFormedRow>& info) { return info.param.name; }

class IllFormedUTF8 : public testing::TestWithParam<IllFormedRow> {};

TEST_P(IllFormedUTF8, BecomesReplacementCharacters) { EXPECT_EQ(utf16FromUTF8(GetParam().utf8), GetParam().utf16); }

TEST_P(IllFormedUTF8, IsRecognised) { EXPECT_FALSE(isWellFormedUTF8(GetParam().utf8)); }

INSTANTIATE_TEST_SUITE_P(
    Table, IllFormedUTF8,
    testing::Values(IllFormedRow{"LoneContinuation", "a\x80z", {0x61, 0xFFFD, 0x7A}},
                    IllFormedRow{"OverlongSlash", "\xC0\xAF", {0xFFFD, 0xFFFD}},
                    IllFormedRow{"OverlongLastOfOneByte", "\xC1\xBF", {0xFFFD, 0xFFFD}},
                    IllFormedRow{"OverlongInThree", "\xE0\x80\xAF", {0xFFFD, 0xFFFD, 0xFFFD}},
                    IllFormedRow{"OverlongLastOfTwoBytes", "\xE0\x9F\xBF", {0xFFFD, 0xFFFD, 0xFFFD}},
                    IllFormedRow{"OverlongInFour", "\xF0\x8F\xBF\xBF", {0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD}},
                    IllFormedRow{"FirstSurrogate", "\xED\xA0\x80", {0xFFFD, 0xFFFD, 0xFFFD}},
                    IllFormedRow{"LastSurrogate", "\xED\xBF\xBF", {0xFFFD, 0xFFFD, 0xFFFD}},
                    IllFormedRow{"AboveTheLastCodePoint", "\xF4\x90\x80\x80", {0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD}},
                    IllFormedRow{"NeverALead", "\xF5\xFF", {0xFFFD, 0xFFFD}},
                    IllFormedRow{"FirstContinuationAsALead", "\x80\x90\x80\x80", {0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD}},
                    IllFormedRow{"LastContinuationAsALead", "\xBF\x90\x80\x80", {0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD}},
                    IllFormedRow{"LeadOfOverlongFormsOnly", "\xC1\x90\x80\x80", {0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD}},
                    IllFormedRow{"LeadBehindTheLastCodePoint", "\xF5\x80\x80\x80", {0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD}},
                    IllFormedRow{"LeadOfFiveBytes", "\xF8\x90\x80\x80", {0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD}},
                    IllFormedRow{"LastByteAsALead", "\xFF\x90\x80\x80", {0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD}},
                    IllFormedRow{"CutShort", "x\xF0\x9F\x8E", {0x78, 0xFFFD, 0xFFFD, 0xFFFD}},
                    IllFormedRow{"CutByASCII", "\xE2\x82x", {0xFFFD, 0xFFFD, 0x78}}),
    illFormedName);

struct LoneHalfRow {
  const char* name;
  std::vector<std::uint16_t> utf16;
  std::string utf8;
};

class LoneHalf : public testing::TestWithParam<LoneHalfRow> {};

TEST_P(LoneHalf, BecomesTheReplacementCharacter) { EXPECT_EQ(utf8FromUTF16(GetParam().utf16), GetParam().utf8); }

INSTANTIATE_TEST_SUITE_P(
    Table, LoneHalf,
    testing::Values(LoneHalfRow{"FirstHigh", {0xD800}, "\xEF\xBF\xBD"},
                    LoneHalfRow{"LastHigh", {0xDBFF}, "\xEF\xBF\xBD"},
                    LoneHalfRow{"FirstLow", {0xDC00}, "\xEF\xBF\xBD"}, LoneHalfRow{"LastLow", {0xDFFF}, "\xEF\xBF\xBD"},
                    LoneHalfRow{"HighAtTheEnd", {0x7A, 0xD83C}, "z\xEF\xBF\xBD"},
                    LoneHalfRow{"HighBeforeAnOrdinaryUnit", {0xD83C, 0x7A}, "\xEF\xBF\xBDz"},
                    LoneHalfRow{"HighBeforeTheUnitBelowTheLows", {0xD83C, 0xDBFF}, "\xEF\xBF\xBD\xEF\xBF\xBD"},
                    LoneHalfRow{"HighBeforeTheUnitAboveTheLows", {0xD83C, 0xE000}, "\xEF\xBF\xBD\xEE\x80\x80"},
                    LoneHalfRow{"HighBeforeAPair", {0xD83C, 0xD83C, 0xDFA7}, "\xEF\xBF\xBD\xF0\x9F\x8E\xA7"},
                    LoneHalfRow{"LowBeforeAPair", {0xDFA7, 0xD83C, 0xDFA7}, "\xEF\xBF\xBD\xF0\x9F\x8E\xA7"},
                    LoneHalfRow{"LowBehindAnOrdinaryUnit", {0x7A, 0xDFA7}, "z\xEF\xBF\xBD"},
                    LoneHalfRow{"LowBehindTheUnitBelowTheHighs", {0xD7FF, 0xDFA7}, "\xED\x9F\xBF\xEF\xBF\xBD"},
                    LoneHalfRow{"LowBehindTheUnitAboveTheLows", {0xE000, 0xDFA7}, "\xEE\x80\x80\xEF\xBF\xBD"}),
    [](const testing::TestParamInfo<LoneHalfRow>& info) { return info.param.name; });

TEST(UnicodeTextTest, AHighHalfIsNotPairedWithWhatStandsBehindTheText) {
  const std::vector<std::uint16_t> memory = {0xD83C, 0xDFA7};

  EXPECT_EQ(utf8FromUTF16(std::span(memory).first(1)), "\xEF\xBF\xBD");
}

}  // namespace
}  // namespace halvo
