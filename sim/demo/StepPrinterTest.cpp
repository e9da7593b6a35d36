#include "sim/demo/StepPrinter.h"

#include <gmock/gmock.h>

namespace halvo::sim {
namespace {

using testing::ElementsAre;

struct FoldRow {
  std::string name;
  std::string first;
  std::string rest;
  std::string text;
  std::size_t width;
  std::vector<std::string> lines;
};

class Folding : public testing::TestWithParam<FoldRow> {};

TEST_P(Folding, KeepsEveryLineWithinTheWidth) {
  const FoldRow& row = GetParam();

  EXPECT_EQ(folded(row.first, row.rest, row.text, row.width), row.lines);
}

INSTANTIATE_TEST_SUITE_P(
    Table, Folding,
    testing::Values(
        FoldRow{"WithoutAWidthALineIsWhole",
                "> ",
                "",
                "one two three four five six",
                kNoWidth,
                {"> one two three four five six"}},
        FoldRow{"WhatFitsExactlyIsOneLine", "", "", "123456789 123456789 1234", 24, {"123456789 123456789 1234"}},
        FoldRow{"OneLetterMoreMakesTwo", "", "", "123456789 123456789 12345", 24, {"123456789 123456789", "12345"}},
        FoldRow{"TheRestIsIndented",
                "note  ",
                "        ",
                "123456789 123456789 12345",
                24,
                {"note  123456789", "        123456789 12345"}},
        FoldRow{"ALongWordIsBroken",
                "",
                "  ",
                "/a/path/that/has/no/blanks/at/all",
                24,
                {"/a/path/that/has/no/blan", "  ks/at/all"}},
        FoldRow{
            "LettersAreCountedNotBytes", "", "", "äöüäöüäöüäöüäöüäöüäöüäöüx", 24, {"äöüäöüäöüäöüäöüäöüäöüäöü", "x"}},
        FoldRow{"ATooNarrowTerminalIsTakenForAWiderOne",
                "",
                "",
                "123456789 123456789 1234",
                3,
                {"123456789 123456789 1234"}},
        FoldRow{"NothingIsStillALine", "label", "", "", 24, {"label"}}),
    [](const auto& row) { return row.param.name; });

TEST(WidthTest, ColumnsAreBelieved) { EXPECT_EQ(widthOf(-1, "72"), 72U); }

TEST(WidthTest, WithoutColumnsAndATerminalThereIsNone) {
  EXPECT_EQ(widthOf(-1, nullptr), kNoWidth);
  EXPECT_EQ(widthOf(-1, "0"), kNoWidth);
  EXPECT_EQ(widthOf(-1, "wide"), kNoWidth);
}

}  // namespace
}  // namespace halvo::sim
