#include "sim/frameworks/security/Requirement.h"

#include <gtest/gtest.h>

#include <string>

namespace halvo::sim {
namespace {

const CodeSignature kApp{"com.halvo.app", "QX4TRM2ZL9", "apple generic"};
const CodeSignature kSystem{"com.apple.cat", "", "apple"};
const CodeSignature kAdHoc{"com.halvo.app", "QX4TRM2ZL9", "adhoc"};

constexpr const char* kWhole =
    "identifier \"com.halvo.app\" and anchor apple generic and certificate leaf[subject.OU] = \"QX4TRM2ZL9\"";

struct MeetsRow {
  const char* name;
  const char* text;
  bool app;
  bool system;
  bool adHoc;
};

class RequirementMeaning : public testing::TestWithParam<MeetsRow> {};

TEST_P(RequirementMeaning, IsAskedOfASignature) {
  const auto requirement = compileRequirement(GetParam().text);

  ASSERT_NE(requirement, nullptr);
  EXPECT_EQ(requirement->isMetBy(kApp), GetParam().app);
  EXPECT_EQ(requirement->isMetBy(kSystem), GetParam().system);
  EXPECT_EQ(requirement->isMetBy(kAdHoc), GetParam().adHoc);
}

INSTANTIATE_TEST_SUITE_P(
    Table, RequirementMeaning,
    testing::Values(
        MeetsRow{"TheWholeRequirement", kWhole, true, false, false},
        MeetsRow{"Identifier", "identifier \"com.halvo.app\"", true, false, true},
        MeetsRow{"IdentifierWithEqualsSign", "identifier = com.halvo.app", true, false, true},
        MeetsRow{"IdentifierIsCaseSensitive", "identifier \"com.halvo.App\"", false, false, false},
        MeetsRow{"IdentifierIsNoPrefix", "identifier \"com.halvo\"", false, false, false},
        MeetsRow{"ApplesOwn", "anchor apple", false, true, false},
        MeetsRow{"ChainEndsAtApple", "anchor apple generic", true, true, false},
        MeetsRow{"Team", "certificate leaf[subject.OU] = QX4TRM2ZL9", true, false, false},
        MeetsRow{"OtherTeam", "certificate leaf[subject.OU] = \"AAAAAAAAAA\"", false, false, false},
        MeetsRow{"NoTeamIsNotTheEmptyTeam", "certificate leaf[subject.OU] = \"\"", false, false, false},
        MeetsRow{"Not", "!anchor apple", true, false, true},
        MeetsRow{"NotBindsTightest", "! anchor apple and identifier \"com.halvo.app\"", true, false, true},
        MeetsRow{"NotOfParentheses", "!(anchor apple or identifier \"com.halvo.app\")", false, false, false},
        MeetsRow{"AndBindsTighterThanOr", "anchor apple or anchor apple generic and identifier \"com.halvo.app\"", true,
                 true, false},
        MeetsRow{"ParenthesesFirst", "(anchor apple or anchor apple generic) and identifier \"com.halvo.app\"", true,
                 false, false},
        MeetsRow{"EscapedQuote", "identifier \"com\\.halvo.app\"", true, false, true},
        MeetsRow{"LineEndsAreBlanks", "identifier\n\"com.halvo.app\"\tand anchor\r\napple generic", true, false,
                 false}),
    [](const auto& row) { return row.param.name; });

struct BadRow {
  const char* name;
  std::string text;
};

class RequirementRefusal : public testing::TestWithParam<BadRow> {};

TEST_P(RequirementRefusal, TextOutsideTheLanguageDoesNotCompile) {
  EXPECT_EQ(compileRequirement(GetParam().text), nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Table, RequirementRefusal,
    testing::Values(BadRow{"Nothing", ""}, BadRow{"Blanks", " \n"}, BadRow{"NoIdentifier", "identifier"},
                    BadRow{"QuoteWithoutEnd", "identifier \"com.halvo.app"},
                    BadRow{"EscapeAtTheEnd", "identifier \"com.halvo.app\\"},
                    BadRow{"AndWithoutRight", "anchor apple and"}, BadRow{"OrWithoutLeft", "or anchor apple"},
                    BadRow{"TwoConditions", "anchor apple anchor apple"}, BadRow{"UnknownWord", "always"},
                    BadRow{"UnknownAnchor", "anchor halvo"}, BadRow{"QuotedKeyword", "\"anchor\" apple"},
                    BadRow{"OpenParenthesis", "(anchor apple"}, BadRow{"CloseParenthesis", "anchor apple)"},
                    BadRow{"EmptyParentheses", "()"}, BadRow{"OtherField", "certificate leaf[subject.CN] = x"},
                    BadRow{"OtherCertificate", "certificate root[subject.OU] = x"},
                    BadRow{"FieldWithoutValue", "certificate leaf[subject.OU] ="},
                    BadRow{"StrangeCharacter", "identifier \"x\" & anchor apple"},
                    BadRow{"NestedWithoutEnd", std::string(100'000, '(')},
                    BadRow{"NegatedWithoutEnd", std::string(100'000, '!')}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace halvo::sim
