#include "client/doctor/ShortText.h"

#include <gtest/gtest.h>

namespace halvo {
namespace {

using std::chrono::seconds;

TEST(ShortenedTest, WhatFitsStays) { EXPECT_EQ(shortened("1.2.0", 5), "1.2.0"); }

TEST(ShortenedTest, WhatDoesNotFitIsCutAndSaysSo) { EXPECT_EQ(shortened("1.2.0.7", 5), "1.2.0..."); }

TEST(ShortenedTest, ACharacterIsNotCutInTwo) { EXPECT_EQ(shortened("a\u00E4\u00E4", 4), "a\u00E4..."); }

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
                                         SizeRow{"Thousand", 1000, "1 KB"},
                                         SizeRow{"MillionLessOne", 999'999, "999 KB"},
                                         SizeRow{"Million", 1'000'000, "1 MB"}),
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
}

TEST(WrappedTest, AShortTextIsOneLine) { EXPECT_EQ(wrapped("Install again.", "! ", "  "), "! Install again.\n"); }

TEST(WrappedTest, LinesHaveEightyCharactersAtMost) {
  EXPECT_EQ(wrapped("1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 12345 12", "", ""),
            "1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 1234567890\n12345 12\n");
  EXPECT_EQ(wrapped("1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 123 12", "", ""),
            "1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 1234567890 123\n12\n");
}

TEST(WrappedTest, AWordThatIsTooLongHasALineOfItsOwn) {
  const std::string word(90, 'x');

  EXPECT_EQ(wrapped("see " + word + " first", "!", " "), "!see\n " + word + "\n first\n");
}

}  // namespace
}  // namespace halvo
