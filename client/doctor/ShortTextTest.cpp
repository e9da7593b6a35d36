#include "client/doctor/ShortText.h"

#include <gtest/gtest.h>

namespace halvo {
namespace {

using std::chrono::seconds;

TEST(ShortenedTest, WhatFitsStays) { EXPECT_EQ(shortened("1.2.0", 5), "1.2.0"); }

TEST(ShortenedTest, WhatDoesNotFitIsCutAndSaysSo) { EXPECT_EQ(shortened("1.2.0.7", 5), "1.2.0..."); }

struct CutRow {
  const char* name;
  const char* text;
  std::size_t most;
};

class CutCharacter : public testing::TestWithParam<CutRow> {};

TEST_P(CutCharacter, IsLeftOutAsAWhole) { EXPECT_EQ(shortened(GetParam().text, GetParam().most), "1.\u00E4..."); }

INSTANTIATE_TEST_SUITE_P(Table, CutCharacter,
                         testing::Values(CutRow{"LetterBehind", "1.\u00E4z", 4}, CutRow{"Umlaut", "1.\u00E4\u00E4", 5},
                                         CutRow{"FirstOfTwoBytes", "1.\u00E4\u00C0", 5},
                                         CutRow{"OddOne", "1.\u00E4\u00C1", 5},
                                         CutRow{"LastOfTwoBytes", "1.\u00E4\u07FF", 5},
                                         CutRow{"EuroAfterOneByte", "1.\u00E4\u20AC", 5},
                                         CutRow{"EuroAfterTwoBytes", "1.\u00E4\u20AC", 6},
                                         CutRow{"FaceAfterOneByte", "1.\u00E4\U0001F600", 5},
                                         CutRow{"FaceAfterThreeBytes", "1.\u00E4\U0001F600", 7}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(ShortenedTest, BytesThatContinueNothingAreCutAsWell) { EXPECT_EQ(shortened("\x80\x80\x80", 2), "..."); }

struct AgeRow {
  const char* name;
  int age;
  const char* text;
};

class AgeText : public testing::TestWithParam<AgeRow> {};

TEST_P(AgeText, IsInTheUnitThatSuits) { EXPECT_EQ(ageText(seconds(GetParam().age)), GetParam().text); }

INSTANTIATE_TEST_SUITE_P(Table, AgeText,
                         testing::Values(AgeRow{"Now", 0, "0 s"}, AgeRow{"TwoMinutesLessOne", 119, "119 s"},
                                         AgeRow{"TwoMinutes", 120, "2 min"}, AgeRow{"TwoHoursLessOne", 7199, "119 min"},
                                         AgeRow{"TwoHours", 7200, "2 h"}, AgeRow{"TwoDaysLessOne", 172'799, "47 h"},
                                         AgeRow{"TwoDays", 172'800, "2 days"}, AgeRow{"Week", 604'800, "7 days"},
                                         AgeRow{"Tomorrow", -1, "in the future"}),
                         [](const auto& row) { return std::string(row.param.name); });

struct SizeRow {
  const char* name;
  std::int64_t bytes;
  const char* text;
};

class SizeText : public testing::TestWithParam<SizeRow> {};

TEST_P(SizeText, IsInTheUnitThatSuits) { EXPECT_EQ(sizeText(GetParam().bytes), GetParam().text); }

INSTANTIATE_TEST_SUITE_P(Table, SizeText,
                         testing::Values(SizeRow{"Nothing", 0, "0 B"}, SizeRow{"Bytes", 999, "999 B"},
                                         SizeRow{"Thousand", 1000, "1 KB"}, SizeRow{"TwoThousandLessOne", 1999, "1 KB"},
                                         SizeRow{"MillionLessOne", 999'999, "999 KB"},
                                         SizeRow{"Million", 1'000'000, "1 MB"},
                                         SizeRow{"TwoMillionsLessOne", 1'999'999, "1 MB"},
                                         SizeRow{"Milliard", 1'000'000'000, "1000 MB"}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(OwnerTextTest, NamesThoseThatAreTheSameOnEveryMac) {
  EXPECT_EQ(ownerText(0, 0), "root:wheel");
  EXPECT_EQ(ownerText(501, 20), "501:staff");
  EXPECT_EQ(ownerText(502, 80), "502:admin");
  EXPECT_EQ(ownerText(20, 501), "20:501");
}

TEST(ModeTextTest, IsOctalWithTheSpecialBitsWhereThereAreAny) {
  EXPECT_EQ(modeText(0755), "755");
  EXPECT_EQ(modeText(0), "000");
  EXPECT_EQ(modeText(04755), "4755");
  EXPECT_EQ(modeText(01000), "1000");
  EXPECT_EQ(modeText(0123), "123");
  EXPECT_EQ(modeText(07654), "7654");
}

TEST(WrappedTest, AShortTextIsOneLine) { EXPECT_EQ(wrapped("Install again.", "! ", "  "), "! Install again.\n"); }

TEST(WrappedTest, NoTextIsTheMarkAlone) { EXPECT_EQ(wrapped("", "!", "  "), "!\n"); }

TEST(WrappedTest, BlanksWithinALineStay) { EXPECT_EQ(wrapped(" a  b", "", ""), " a  b\n"); }

TEST(WrappedTest, LinesHaveEightyCharactersAtMost) {
  EXPECT_EQ(wrapped("1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 1234 12", "", ""),
            "1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 1234567890\n1234 12\n");
  EXPECT_EQ(wrapped("1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 123 12", "", ""),
            "1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 123\n12\n");
}

TEST(WrappedTest, MarkAndIndentAreOfTheEighty) {
  const std::string word(74, 'x');

  EXPECT_EQ(wrapped(word + " abc " + word + " abc " + word + " abcd", "! ", "  "),
            "! " + word + " abc\n  " + word + " abc\n  " + word + "\n  abcd\n");
}

TEST(WrappedTest, CharactersCountAndNotBytes) {
  EXPECT_EQ(wrapped("\u00E4\u00C1\u20AC4567890 1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 "
                    "\u00E4\u00C1\u20AC 12",
                    "", ""),
            "\u00E4\u00C1\u20AC4567890 1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 "
            "\u00E4\u00C1\u20AC\n12\n");
}

TEST(WrappedTest, AWordThatIsTooLongHasALineOfItsOwn) {
  const std::string word(90, 'x');

  EXPECT_EQ(wrapped("see " + word + " first", "!", " "), "!see\n " + word + "\n first\n");
  EXPECT_EQ(wrapped(word + " first", "!", " "), "!" + word + "\n first\n");
}

}  // namespace
}  // namespace halvo
