#include "client/NearestWord.h"

#include <gtest/gtest.h>

#include <array>

namespace halvo {
namespace {

constexpr std::array<std::string_view, 4> kKnown = {"ping", "install", "finalize", "uninstall"};

struct WordRow {
  const char* name;
  std::string typed;
  const char* nearest;
};

class NearestWord : public testing::TestWithParam<WordRow> {};

TEST_P(NearestWord, IsFound) { EXPECT_EQ(nearestWord(GetParam().typed, kKnown), GetParam().nearest); }

INSTANTIATE_TEST_SUITE_P(
    Table, NearestWord,
    testing::Values(WordRow{"OneTooMany", "pinng", "ping"}, WordRow{"OneTooFew", "pin", "ping"},
                    WordRow{"OneWrong", "pong", "ping"}, WordRow{"Exchanged", "pnig", "ping"},
                    WordRow{"ExchangedFirst", "ipng", "ping"}, WordRow{"ExchangedLast", "pign", "ping"},
                    WordRow{"OneTooManyFirst", "xping", "ping"}, WordRow{"OneTooManyLast", "pings", "ping"},
                    WordRow{"OneTooFewFirst", "nstall", "install"}, WordRow{"OneWrongFirst", "xing", "ping"},
                    WordRow{"OneWrongLast", "pinx", "ping"}, WordRow{"TwoInSixCharacters", "inxtal", "install"},
                    WordRow{"ExchangedAndOneTooFew", "nistal", "install"},
                    WordRow{"TwoInALongWord", "finalise!", "finalize"},
                    WordRow{"TheNearerOfTwo", "unistall", "uninstall"}, WordRow{"TheSame", "install", "install"}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    NothingNear, NearestWord,
    testing::Values(WordRow{"Empty", "", ""}, WordRow{"AnotherWord", "explode", ""},
                    WordRow{"TwoInAShortWord", "pang!", ""}, WordRow{"TwoNeighboursWrong", "pxxg", ""},
                    WordRow{"HalfOfAnExchange", "pxig", ""}, WordRow{"TheOtherHalf", "pnxg", ""},
                    WordRow{"TwoInFiveCharacters", "instl", ""}, WordRow{"TheEndOfAWord", "stall", ""},
                    WordRow{"TheBeginningOfAWord", "insta", ""}, WordRow{"AWordBehindOthers", "xxxping", ""},
                    WordRow{"AWordBeforeOthers", "pingxxx", ""}, WordRow{"AnotherLongWord", "zzzzzzzzzzzz", ""},
                    WordRow{"OneLetter", "p", ""}, WordRow{"Endless", std::string(100'000, 'p'), ""}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(NearestWordTest, NothingIsNearToMoreThan64Characters) {
  const std::string longest(64, 'x');
  const std::array<std::string_view, 1> known = {longest};

  EXPECT_EQ(nearestWord(longest, known), longest);
  EXPECT_EQ(nearestWord(longest + "x", known), "");
}

// It may be a piece of something longer.
TEST(NearestWordTest, WhatStandsBeforeTheWordDoesNotCount) {
  EXPECT_EQ(nearestWord(std::string_view("iping").substr(1), kKnown), "ping");
}

TEST(NearestWordTest, OfTwoThatAreAsNearTheFirstIsMeant) {
  constexpr std::array<std::string_view, 2> kTwo = {"bake", "cake"};

  EXPECT_EQ(nearestWord("take", kTwo), "bake");
}

TEST(NearestWordTest, ASuggestionIsAQuestionBehindTheComplaint) {
  EXPECT_EQ(suggestionFor("pong", kKnown), " (did you mean 'ping'?)");
  EXPECT_EQ(suggestionFor("explode", kKnown), "");
  EXPECT_EQ(suggestionFor("ping", kKnown), "");
}

}  // namespace
}  // namespace halvo
