#include "client/Options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Words = std::vector<std::string>;

struct TypedRow {
  const char* name;
  Words typed;
  Words operands;
  std::vector<GivenOption> options;
};

class TypedWordsTest : public testing::TestWithParam<TypedRow> {};

TEST_P(TypedWordsTest, AreOptionsAndOperandsInTheirOrder) {
  const TypedWords words = takeApart(GetParam().typed);

  EXPECT_EQ(words.operands, GetParam().operands);
  EXPECT_EQ(words.options, GetParam().options);
  EXPECT_EQ(words.problem, std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    Table, TypedWordsTest,
    testing::Values(TypedRow{"Nothing", {}, {}, {}}, TypedRow{"OperandsOnly", {"a", "b", ""}, {"a", "b", ""}, {}},
                    TypedRow{"OptionsAnywhere",
                             {"--json", "a", "--timeout", "5", "b", "--help"},
                             {"a", "b"},
                             {{Option::json, ""}, {Option::timeout, "5"}, {Option::help, ""}}},
                    TypedRow{"EqualsSign", {"--timeout=5", "a"}, {"a"}, {{Option::timeout, "5"}}},
                    TypedRow{"EmptyValue", {"--manifest=", "a"}, {"a"}, {{Option::manifest, ""}}},
                    TypedRow{"ValueLikeAnOption", {"--manifest", "--json"}, {}, {{Option::manifest, "--json"}}},
                    TypedRow{"OneLetter", {"-h", "a"}, {"a"}, {{Option::help, ""}}},
                    TypedRow{"OneLetterTwice", {"-hh"}, {}, {{Option::help, ""}, {Option::help, ""}}},
                    TypedRow{"Shortened", {"--vers"}, {}, {{Option::version, ""}}},
                    TypedRow{"EverythingBehindTwoDashes",
                             {"a", "--json", "--", "--help", "-h", "b", "--"},
                             {"a", "--help", "-h", "b", "--"},
                             {{Option::json, ""}}},
                    TypedRow{"OneDash", {"-"}, {"-"}, {}}),
    [](const auto& row) { return std::string(row.param.name); });

struct NameRow {
  const char* name;
  Option option;
};

class OptionName : public testing::TestWithParam<NameRow> {};

TEST_P(OptionName, IsWhatAsksForTheOption) {
  const Words typed = {GetParam().name, "value"};

  const TypedWords words = takeApart(typed);

  ASSERT_EQ(words.options.size(), 1U);
  EXPECT_EQ(words.options.front().option, GetParam().option);
  EXPECT_EQ(nameOf(GetParam().option), GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(Table, OptionName,
                         testing::Values(NameRow{"--help", Option::help}, NameRow{"--version", Option::version},
                                         NameRow{"--manifest", Option::manifest}, NameRow{"--timeout", Option::timeout},
                                         NameRow{"--accept-audio-interruption", Option::acceptAudioInterruption},
                                         NameRow{"--without-grant", Option::withoutGrant},
                                         NameRow{"--without-checks", Option::withoutChecks},
                                         NameRow{"--open-settings", Option::openSettings},
                                         NameRow{"--json", Option::json}));

TEST(OptionsTest, AllNamesAreKnown) {
  EXPECT_THAT(optionNames(),
              ElementsAre("--help", "--version", "--manifest", "--timeout", "--accept-audio-interruption",
                          "--without-grant", "--without-checks", "--open-settings", "--json"));
}

struct ProblemRow {
  const char* name;
  Words typed;
  const char* problem;
};

class WordThatIsNoOption : public testing::TestWithParam<ProblemRow> {};

TEST_P(WordThatIsNoOption, IsTheProblem) { EXPECT_EQ(takeApart(GetParam().typed).problem, GetParam().problem); }

INSTANTIATE_TEST_SUITE_P(
    Table, WordThatIsNoOption,
    testing::Values(ProblemRow{"Long", {"a", "--red", "b"}, "'--red' is not an option"},
                    ProblemRow{"LongWithAValue", {"--red=a=b"}, "'--red' is not an option"},
                    ProblemRow{"OneLetter", {"-x", "b"}, "'-x' is not an option"},
                    ProblemRow{"AnotherLetterBehindHelp", {"-hx"}, "'-x' is not an option"},
                    ProblemRow{"Mistyped", {"--jsom"}, "'--jsom' is not an option (did you mean '--json'?)"},
                    ProblemRow{"HelpWithAValue", {"--help=me"}, "--help takes no value"},
                    ProblemRow{"SwitchWithAValue", {"--json=1"}, "--json takes no value"},
                    ProblemRow{"MissingPath", {"a", "--manifest"}, "--manifest needs the path of a file"},
                    ProblemRow{"MissingNumber", {"--timeout"}, "--timeout needs a number of seconds"},
                    ProblemRow{"TheFirstOfTwo", {"--red", "--timeout"}, "'--red' is not an option"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(OptionsTest, WhatIsRightBesidesAProblemIsStillFound) {
  const TypedWords words = takeApart({"--red", "a", "--json"});

  EXPECT_THAT(words.operands, ElementsAre("a"));
  EXPECT_THAT(words.options, ElementsAre(GivenOption{Option::json, ""}));
}

TEST(OptionsTest, WordsHaveTheOptionsThatWereGiven) {
  const TypedWords words = takeApart({"--json", "--help"});

  EXPECT_TRUE(words.has(Option::json));
  EXPECT_TRUE(words.has(Option::help));
  EXPECT_FALSE(words.has(Option::version));
  EXPECT_FALSE(TypedWords{}.has(Option::help));
}

TEST(OptionsTest, NothingOfOneCallIsLeftForTheNext) {
  static_cast<void>(takeApart({"a", "-xh", "--", "b", "c"}));

  const TypedWords words = takeApart({"d"});

  EXPECT_THAT(words.operands, ElementsAre("d"));
  EXPECT_THAT(words.options, IsEmpty());
  EXPECT_EQ(words.problem, std::nullopt);
}

}  // namespace
}  // namespace halvo
