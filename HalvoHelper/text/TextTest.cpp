#include "HalvoHelper/text/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct DecimalRow {
  const char* name;
  std::string_view text;
  std::optional<std::int64_t> expected;
};

class DecimalNumber : public testing::TestWithParam<DecimalRow> {};

TEST_P(DecimalNumber, IsReadWholeOrNotAtAll) { EXPECT_EQ(halvoParseDecimal(GetParam().text), GetParam().expected); }

constexpr auto kMax = std::numeric_limits<std::int64_t>::max();
constexpr auto kMin = std::numeric_limits<std::int64_t>::min();

INSTANTIATE_TEST_SUITE_P(
    Table, DecimalNumber,
    testing::Values(DecimalRow{"Digits", "501", 501}, DecimalRow{"Zero", "0", 0}, DecimalRow{"LeadingZeros", "007", 7},
                    DecimalRow{"ManyLeadingZeros", "0000000000000000000000000000000000000005", 5},
                    DecimalRow{"Plus", "+3", 3}, DecimalRow{"Minus", "-2", -2}, DecimalRow{"MinusZero", "-0", 0},
                    DecimalRow{"Largest", "9223372036854775807", kMax},
                    DecimalRow{"LargestWithPlus", "+9223372036854775807", kMax},
                    DecimalRow{"Smallest", "-9223372036854775808", kMin},
                    DecimalRow{"OneTooLarge", "9223372036854775808", std::nullopt},
                    DecimalRow{"OneTooSmall", "-9223372036854775809", std::nullopt},
                    DecimalRow{"TwentyDigits", "12345678901234567890", std::nullopt},
                    DecimalRow{"Empty", "", std::nullopt}, DecimalRow{"PlusAlone", "+", std::nullopt},
                    DecimalRow{"MinusAlone", "-", std::nullopt}, DecimalRow{"TwoPluses", "++1", std::nullopt},
                    DecimalRow{"PlusMinus", "+-1", std::nullopt}, DecimalRow{"MinusPlus", "-+1", std::nullopt},
                    DecimalRow{"TwoMinuses", "--1", std::nullopt}, DecimalRow{"LeadingBlank", " 1", std::nullopt},
                    DecimalRow{"TrailingBlank", "1 ", std::nullopt}, DecimalRow{"TrailingText", "7b", std::nullopt},
                    DecimalRow{"Text", "beta", std::nullopt}, DecimalRow{"Hexadecimal", "0x10", std::nullopt},
                    DecimalRow{"Fraction", "1.0", std::nullopt}, DecimalRow{"Exponent", "1e3", std::nullopt},
                    DecimalRow{"Separator", "1,000", std::nullopt},
                    DecimalRow{"EmbeddedNul", std::string_view("1\0", 2), std::nullopt},
                    DecimalRow{"ArabicIndicDigit", "\xD9\xA1", std::nullopt},
                    DecimalRow{"FullwidthDigit", "\xEF\xBC\x91", std::nullopt}),
    [](const auto& row) { return row.param.name; });

TEST(TrimBlanksTest, TakesBlanksAndTabsFromBothEnds) { EXPECT_EQ(halvoTrimBlanks(" \t a b\t \t"), "a b"); }

TEST(TrimBlanksTest, LeavesNothingOfATextOfBlanks) { EXPECT_EQ(halvoTrimBlanks(" \t \t "), ""); }

TEST(TrimBlanksTest, LeavesEveryOtherWhitespace) {
  EXPECT_EQ(halvoTrimBlanks(" \r\xC2\xA0x\n\v\f "), "\r\xC2\xA0x\n\v\f");
}

TEST(TrimBlanksTest, TakesAnEmptyText) { EXPECT_EQ(halvoTrimBlanks(""), ""); }

struct WhitespaceRow {
  const char* name;
  char32_t codePoint;
  bool expected;
};

class Whitespace : public testing::TestWithParam<WhitespaceRow> {};

TEST_P(Whitespace, IsTheUnicodeProperty) { EXPECT_EQ(halvoIsWhitespace(GetParam().codePoint), GetParam().expected); }

INSTANTIATE_TEST_SUITE_P(
    Table, Whitespace,
    testing::Values(WhitespaceRow{"Tab", 0x09, true}, WhitespaceRow{"LineFeed", 0x0A, true},
                    WhitespaceRow{"VerticalTab", 0x0B, true}, WhitespaceRow{"FormFeed", 0x0C, true},
                    WhitespaceRow{"CarriageReturn", 0x0D, true}, WhitespaceRow{"Blank", 0x20, true},
                    WhitespaceRow{"NextLine", 0x85, true}, WhitespaceRow{"NoBreakSpace", 0xA0, true},
                    WhitespaceRow{"OghamSpace", 0x1680, true}, WhitespaceRow{"EnQuad", 0x2000, true},
                    WhitespaceRow{"HairSpace", 0x200A, true}, WhitespaceRow{"LineSeparator", 0x2028, true},
                    WhitespaceRow{"ParagraphSeparator", 0x2029, true}, WhitespaceRow{"NarrowNoBreak", 0x202F, true},
                    WhitespaceRow{"MathematicalSpace", 0x205F, true}, WhitespaceRow{"IdeographicSpace", 0x3000, true},
                    WhitespaceRow{"Nul", 0x00, false}, WhitespaceRow{"Backspace", 0x08, false},
                    WhitespaceRow{"ShiftOut", 0x0E, false}, WhitespaceRow{"UnitSeparator", 0x1F, false},
                    WhitespaceRow{"Exclamation", 0x21, false}, WhitespaceRow{"MongolianVowelSeparator", 0x180E, false},
                    WhitespaceRow{"BeforeTheQuads", 0x1FFF, false}, WhitespaceRow{"ZeroWidthSpace", 0x200B, false},
                    WhitespaceRow{"WordJoiner", 0x2060, false}, WhitespaceRow{"ByteOrderMark", 0xFEFF, false},
                    WhitespaceRow{"Replacement", 0xFFFD, false}),
    [](const auto& row) { return row.param.name; });

TEST(AllWhitespaceTest, HoldsForAnEmptyText) { EXPECT_TRUE(halvoIsAllWhitespace("")); }

TEST(AllWhitespaceTest, HoldsForEveryKindOfSpaceAndLineEnd) {
  EXPECT_TRUE(halvoIsAllWhitespace(" \t\r\n\v\f\xC2\x85\xC2\xA0\xE2\x80\xA8\xE3\x80\x80"));
}

TEST(AllWhitespaceTest, FailsForOneOtherCharacter) { EXPECT_FALSE(halvoIsAllWhitespace(" \n . \n ")); }

TEST(AllWhitespaceTest, FailsForAnIllFormedByte) { EXPECT_FALSE(halvoIsAllWhitespace(" \xA0 ")); }

TEST(AllWhitespaceTest, FailsForANul) { EXPECT_FALSE(halvoIsAllWhitespace(std::string_view("\0", 1))); }

struct Utf8Row {
  const char* name;
  std::string_view text;
  bool valid;
};

class Utf8 : public testing::TestWithParam<Utf8Row> {};

TEST_P(Utf8, IsJudgedStrictly) {
  EXPECT_EQ(halvoLeadingUTF8(GetParam().text) == GetParam().text.size(), GetParam().valid);
}

INSTANTIATE_TEST_SUITE_P(
    Table, Utf8,
    testing::Values(Utf8Row{"Empty", "", true}, Utf8Row{"Ascii", "abc", true},
                    Utf8Row{"Nul", std::string_view("a\0b", 3), true}, Utf8Row{"TwoBytes", "\xC3\xA9", true},
                    Utf8Row{"ThreeBytes", "\xE2\x82\xAC", true}, Utf8Row{"FourBytes", "\xF0\x9F\x94\x8A", true},
                    Utf8Row{"LastOfOneByte", "\x7F", true}, Utf8Row{"FirstOfTwoBytes", "\xC2\x80", true},
                    Utf8Row{"LastOfTwoBytes", "\xDF\xBF", true}, Utf8Row{"FirstOfThreeBytes", "\xE0\xA0\x80", true},
                    Utf8Row{"LastOfThreeBytes", "\xEF\xBF\xBF", true},
                    Utf8Row{"FirstOfFourBytes", "\xF0\x90\x80\x80", true}, Utf8Row{"LeadF1", "\xF1\x80\x80\x80", true},
                    Utf8Row{"LeadF3", "\xF3\xBF\xBF\xBF", true}, Utf8Row{"LastCodePoint", "\xF4\x8F\xBF\xBF", true},
                    Utf8Row{"BeforeSurrogates", "\xED\x9F\xBF", true}, Utf8Row{"AfterSurrogates", "\xEE\x80\x80", true},
                    Utf8Row{"ContinuationAlone", "\x80", false}, Utf8Row{"CutTwo", "\xC3", false},
                    Utf8Row{"CutThree", "\xE2\x82", false}, Utf8Row{"CutFour", "\xF0\x9F\x94", false},
                    Utf8Row{"LeadThenAscii", "\xC3(", false}, Utf8Row{"OverlongSlash", "\xC0\xAF", false},
                    Utf8Row{"OverlongThree", "\xE0\x80\xAF", false}, Utf8Row{"OverlongFour", "\xF0\x80\x80\xAF", false},
                    Utf8Row{"LastOverlongTwo", "\xC1\xBF", false}, Utf8Row{"LastOverlongThree", "\xE0\x9F\xBF", false},
                    Utf8Row{"LastOverlongFour", "\xF0\x8F\xBF\xBF", false},
                    Utf8Row{"FourContinuations", "\x84\x80\x80\x80", false},
                    Utf8Row{"LeadF9", "\xF9\x80\x80\x80", false}, Utf8Row{"LeadF5", "\xF5\x80\x80\x80", false},
                    Utf8Row{"Surrogate", "\xED\xA0\x80", false}, Utf8Row{"LastSurrogate", "\xED\xBF\xBF", false},
                    Utf8Row{"BeyondUnicode", "\xF4\x90\x80\x80", false},
                    Utf8Row{"FiveBytes", "\xF8\x88\x80\x80\x80", false}, Utf8Row{"ByteFF", "\xFF", false}),
    [](const auto& row) { return row.param.name; });

struct LeadingRow {
  const char* name;
  std::string_view text;
  std::size_t bytes;
};

class LeadingUtf8 : public testing::TestWithParam<LeadingRow> {};

TEST_P(LeadingUtf8, EndsBeforeWhatIsIllFormedOrNotWhole) {
  EXPECT_EQ(halvoLeadingUTF8(GetParam().text), GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(
    Table, LeadingUtf8,
    testing::Values(LeadingRow{"IllFormedAtOnce", "\xFFx", 0}, LeadingRow{"IllFormedSeventh", "123456\xFFx", 6},
                    LeadingRow{"IllFormedEighth", "1234567\xFFx", 7}, LeadingRow{"IllFormedNinth", "12345678\xFFx", 8},
                    LeadingRow{"IllFormedFirstOfEight", "12345678\xFFxxxxxxx", 8},
                    LeadingRow{"IllFormedLastOfSixteen", "123456781234567\x80", 15},
                    LeadingRow{"IllFormedAfterOthers", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x94\x8A\xFE", 9},
                    LeadingRow{"AsciiAfterwards", "\xC3\xA9 12345678\xC3 and 12345678", 11},
                    LeadingRow{"CutTwo", "12345678\xC3", 8}, LeadingRow{"CutThree", "12345678\xE2\x82", 8},
                    LeadingRow{"CutFour", "12345678\xF0\x9F\x94", 8},
                    LeadingRow{"WholeAroundEightBytes", "1234567\xC3\xA9 1234567", 17}),
    [](const auto& row) { return row.param.name; });

struct CodePointRow {
  const char* name;
  std::string_view text;
  char32_t value;
};

class Encoded : public testing::TestWithParam<CodePointRow> {};

TEST_P(Encoded, CodePointIsReadWithAllItsBits) {
  const CodePoint first = halvoFirstCodePoint(GetParam().text);

  EXPECT_EQ(first.value, GetParam().value);
  EXPECT_EQ(first.rest, "");
}

INSTANTIATE_TEST_SUITE_P(Table, Encoded,
                         testing::Values(CodePointRow{"LastOfOneByte", "\x7F", 0x7F},
                                         CodePointRow{"FirstOfTwoBytes", "\xC2\x80", 0x80},
                                         CodePointRow{"TwoBytes", "\xC3\xA9", 0xE9},
                                         CodePointRow{"TwoBytesMixed", "\xD5\x95", 0x555},
                                         CodePointRow{"LastOfTwoBytes", "\xDF\xBF", 0x7FF},
                                         CodePointRow{"FirstOfThreeBytes", "\xE0\xA0\x80", 0x800},
                                         CodePointRow{"ThreeBytesMixed", "\xE5\x95\x95", 0x5555},
                                         CodePointRow{"LastOfThreeBytes", "\xEF\xBF\xBF", 0xFFFF},
                                         CodePointRow{"FirstOfFourBytes", "\xF0\x90\x80\x80", 0x10000},
                                         CodePointRow{"LeadF1", "\xF1\x80\x80\x80", 0x40000},
                                         CodePointRow{"FourBytesMixed", "\xF1\x95\x95\x95", 0x55555},
                                         CodePointRow{"LeadF3", "\xF3\xBF\xBF\xBF", 0xFFFFF},
                                         CodePointRow{"LastCodePoint", "\xF4\x8F\xBF\xBF", 0x10FFFF}),
                         [](const auto& row) { return row.param.name; });

TEST(FirstCodePointTest, GivesValueAndRest) {
  const CodePoint first = halvoFirstCodePoint("\xE2\x82\xACx");

  EXPECT_EQ(first.value, 0x20ACu);
  EXPECT_EQ(first.rest, "x");
}

TEST(FirstCodePointTest, TakesAnIllFormedByteAloneAsTheReplacementCharacter) {
  const CodePoint first = halvoFirstCodePoint("\xE2\x82x");

  EXPECT_EQ(first.value, 0xFFFDu);
  EXPECT_EQ(first.rest, "\x82x");
}

std::vector<int> bytesThatTheQuickRoadReadsDifferently() {
  std::vector<int> bytes;
  for (int byte = 0; byte < 256; ++byte) {
    const std::string text = std::string(1, static_cast<char>(byte)) + "\x80x";
    const CodePoint quick = halvoFirstCodePoint(text);
    const CodePoint plain = halvoDecodedCodePoint(text);
    if (quick.value != plain.value || quick.rest != plain.rest) bytes.push_back(byte);
  }
  return bytes;
}

TEST(FirstCodePointTest, IsTheDecodedOneForEveryByte) {
  EXPECT_THAT(bytesThatTheQuickRoadReadsDifferently(), IsEmpty());
}

bool isComma(char32_t c) { return c == ','; }

TEST(SplitTest, GivesThePiecesBetweenSeparators) {
  EXPECT_THAT(halvoSplit("a,bc,\xE2\x82\xAC", isComma), ElementsAre("a", "bc", "\xE2\x82\xAC"));
}

TEST(SplitTest, DropsEmptyPieces) { EXPECT_THAT(halvoSplit(",,a,,b,,", isComma), ElementsAre("a", "b")); }

TEST(SplitTest, GivesNothingForSeparatorsAlone) { EXPECT_THAT(halvoSplit(",,,", isComma), IsEmpty()); }

TEST(SplitTest, GivesNothingForAnEmptyText) { EXPECT_THAT(halvoSplit("", isComma), IsEmpty()); }

TEST(SplitTest, GivesAWholeTextWithoutSeparator) { EXPECT_THAT(halvoSplit("abc", isComma), ElementsAre("abc")); }

TEST(SplitTest, KeepsIllFormedBytesInTheirPiece) {
  EXPECT_THAT(halvoSplit("a\xFF"
                         "b,\x80",
                         isComma),
              ElementsAre("a\xFF"
                          "b",
                          "\x80"));
}

TEST(SplitTest, DoesNotSplitInsideACodePoint) {
  // The second byte of U+012C is 0xAC, and 0x2C is the comma.
  EXPECT_THAT(halvoSplit("\xC4\xAC,x", isComma), ElementsAre("\xC4\xAC", "x"));
}

struct DigitsRow {
  const char* name;
  std::string_view text;
  bool appended;
  const char* digits;  // of a text that held "7F"
};

class HexDigits : public testing::TestWithParam<DigitsRow> {};

TEST_P(HexDigits, AreAppendedAllOrNone) {
  std::string digits = "7F";

  EXPECT_EQ(halvoAppendHexDigits(digits, GetParam().text), GetParam().appended);
  EXPECT_EQ(digits, GetParam().digits);
}

INSTANTIATE_TEST_SUITE_P(
    Table, HexDigits,
    testing::Values(DigitsRow{"Decimal", "0123456789", true, "7F0123456789"},
                    DigitsRow{"UpperCase", "ABCDEF", true, "7FABCDEF"},
                    DigitsRow{"LowerCase", "abcdef", true, "7FABCDEF"}, DigitsRow{"Pairs", "a0 1B", true, "7FA01B"},
                    DigitsRow{"Empty", "", true, "7F"}, DigitsRow{"Blanks", " \t ", true, "7F"},
                    DigitsRow{"EveryWhitespace",
                              "1\r2\v3\f4\xC2\xA0"
                              "5\xE2\x80\xA8"
                              "6",
                              true, "7F123456"},
                    DigitsRow{"BelowZero", "1/", false, "7F"}, DigitsRow{"AboveNine", "1:", false, "7F"},
                    DigitsRow{"BelowUpperA", "1@", false, "7F"}, DigitsRow{"AboveUpperF", "1G", false, "7F"},
                    DigitsRow{"BelowLowerA", "1`", false, "7F"}, DigitsRow{"AboveLowerF", "1g", false, "7F"},
                    DigitsRow{"OtherTextFirst", "x1", false, "7F"}, DigitsRow{"OtherTextLast", "1 2 x", false, "7F"},
                    DigitsRow{"FullwidthDigit", "1\xEF\xBC\x91", false, "7F"},
                    DigitsRow{"IllFormed", "1\xA0", false, "7F"},
                    DigitsRow{"Nul", std::string_view("1\0", 2), false, "7F"}),
    [](const auto& row) { return row.param.name; });

TEST(HexDigitsTest, AreLeftOutBeyondTheMost) {
  std::string digits = "7F";

  EXPECT_TRUE(halvoAppendHexDigits(digits, "ab cd", 5));

  EXPECT_EQ(digits, "7FABC");
}

TEST(HexDigitsTest, AreNoneWhenOtherTextFollowsBeyondTheMost) {
  std::string digits = "7F";

  EXPECT_FALSE(halvoAppendHexDigits(digits, "ab cd x", 5));

  EXPECT_EQ(digits, "7F");
}

TEST(LowercasedTest, TouchesLatinCapitalsOnly) {
  EXPECT_EQ(halvoLowercasedASCII("AZ az @[`{ 09 \xC3\x89 \xE2\x84\xAA"), "az az @[`{ 09 \xC3\x89 \xE2\x84\xAA");
}

TEST(HoldsNulTest, FindsOneAnywhere) {
  EXPECT_TRUE(halvoHoldsNul(std::string_view("\0ab", 3)));
  EXPECT_TRUE(halvoHoldsNul(std::string_view("a\0b", 3)));
  EXPECT_TRUE(halvoHoldsNul(std::string_view("ab\0", 3)));
}

TEST(HoldsNulTest, FindsNoneInOrdinaryText) {
  EXPECT_FALSE(halvoHoldsNul("/Applications/Halvo.app"));
  EXPECT_FALSE(halvoHoldsNul(""));
}

}  // namespace
}  // namespace halvo
