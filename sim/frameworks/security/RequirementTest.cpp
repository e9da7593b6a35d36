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

  ASSERT_TRUE(requirement);
  EXPECT_EQ(requirement(kApp), GetParam().app);
  EXPECT_EQ(requirement(kSystem), GetParam().system);
  EXPECT_EQ(requirement(kAdHoc), GetParam().adHoc);
}

INSTANTIATE_TEST_SUITE_P(
    Table, RequirementMeaning,
    testing::Values(MeetsRow{"TheWholeRequirement", kWhole, true, false, false},
                    MeetsRow{"Identifier", "identifier \"com.halvo.app\"", true, false, true},
                    MeetsRow{"IdentifierIsCaseSensitive", "identifier \"com.halvo.App\"", false, false, false},
                    MeetsRow{"IdentifierIsNoPrefix", "identifier \"com.halvo\"", false, false, false},
                    MeetsRow{"ChainEndsAtApple", "anchor apple generic", true, true, false},
                    MeetsRow{"Team", "certificate leaf[subject.OU] = \"QX4TRM2ZL9\"", true, false, false},
                    MeetsRow{"OtherTeam", "certificate leaf[subject.OU] = \"AAAAAAAAAA\"", false, false, false},
                    MeetsRow{"NoTeamIsNotTheEmptyTeam", "certificate leaf[subject.OU] = \"\"", false, false, false},
                    MeetsRow{"EscapedQuote", "identifier \"com\\.halvo.app\"", true, false, true},
                    MeetsRow{"LineEndsAreBlanks", "identifier\n\"com.halvo.app\"\tand anchor\r\napple generic", true,
                             false, false}),
    [](const auto& row) { return row.param.name; });

struct BadRow {
  const char* name;
  std::string text;
};

class RequirementRefusal : public testing::TestWithParam<BadRow> {};

TEST_P(RequirementRefusal, TextOutsideTheLanguageDoesNotCompile) { EXPECT_FALSE(compileRequirement(GetParam().text)); }

INSTANTIATE_TEST_SUITE_P(Table, RequirementRefusal,
                         testing::Values(BadRow{"Nothing", ""}, BadRow{"Blanks", " \n"},
                                         BadRow{"NoIdentifier", "identifier"},
                                         BadRow{"QuoteWithoutEnd", "identifier \"com.halvo.app"},
                                         BadRow{"EscapeAtTheEnd", "identifier \"com.halvo.app\\"},
                                         BadRow{"AndWithoutRight", "anchor apple generic and"},
                                         BadRow{"AndWithoutLeft", "and anchor apple generic"},
                                         BadRow{"TwoConditions", "anchor apple generic anchor apple generic"},
                                         BadRow{"UnknownWord", "always"}, BadRow{"UnknownAnchor", "anchor halvo"},
                                         BadRow{"WordThatGoesOn", "anchor apple generically"},
                                         BadRow{"QuotedKeyword", "\"anchor\" apple generic"},
                                         BadRow{"OtherField", "certificate leaf[subject.CN] = \"x\""},
                                         BadRow{"OtherCertificate", "certificate root[subject.OU] = \"x\""},
                                         BadRow{"FieldWithoutValue", "certificate leaf[subject.OU] ="},
                                         BadRow{"StrangeCharacter", "identifier \"x\" & anchor apple generic"}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace halvo::sim
