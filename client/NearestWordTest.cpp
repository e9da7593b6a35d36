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

INSTANTIATE_TEST_SUITE_P(Table, NearestWord,
                         testing::Values(WordRow{"OneTooMany", "pinng", "ping"}, WordRow{"OneTooFew", "pin", "ping"},
                                         WordRow{"OneWrong", "pong", "ping"}, WordRow{"Exchanged", "pnig", "ping"},
                                         WordRow{"ExchangedFirst", "ipng", "ping"},
                                         WordRow{"TwoInALongWord", "finalise!", "finalize"},
                                         WordRow{"TheNearerOfTwo", "unistall", "uninstall"},
                                         WordRow{"TheSame", "install", "install"}),
                         [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(NothingNear, NearestWord,
                         testing::Values(WordRow{"Empty", "", ""}, WordRow{"AnotherWord", "explode", ""},
                                         WordRow{"TwoInAShortWord", "pang!", ""}, WordRow{"OneLetter", "p", ""},
                                         WordRow{"Endless", std::string(100'000, 'p'), ""}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(NearestWordTest, ASuggestionIsAQuestionBehindTheComplaint) {
  EXPECT_EQ(suggestionFor("pong", kKnown), " (did you mean 'ping'?)");
  EXPECT_EQ(suggestionFor("explode", kKnown), "");
  EXPECT_EQ(suggestionFor("ping", kKnown), "");
}

}  // namespace
}  // namespace halvo
