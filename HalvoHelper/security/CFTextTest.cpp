#include "HalvoHelper/security/CFText.h"

#include <gtest/gtest.h>

#include <string>

#include "sim/frameworks/testing/FrameworkProbe.h"

namespace halvo {
namespace {

struct TextRow {
  const char* name;
  std::string text;
};

class Utf8Text : public testing::TestWithParam<TextRow> {};

TEST_P(Utf8Text, ComesBackAsItWas) {
  const ScopedCF<CFStringRef> string = halvoCreateCFString(GetParam().text);

  EXPECT_EQ(halvoTextOf(string.get()), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Table, Utf8Text,
                         testing::Values(TextRow{"Empty", ""}, TextRow{"Ascii", "user"},
                                         TextRow{"TwoByteLetters", "Gr\xC3\xB6\xC3\x9F"},
                                         TextRow{"Emoji", "\xF0\x9F\x94\x8A"},
                                         TextRow{"EmbeddedNul", std::string("a\0b", 3)},
                                         TextRow{"Long", std::string(100000, 'x')}),
                         [](const auto& row) { return row.param.name; });

TEST(CFTextTest, MakesNothingOfIllFormedText) { EXPECT_EQ(halvoCreateCFString("a\xFF"), nullptr); }

TEST(CFTextTest, ReadsNothingOfNoObject) { EXPECT_EQ(halvoTextOf(nullptr), std::nullopt); }

TEST(CFTextTest, ReadsNothingOfAnotherKindOfObject) { EXPECT_EQ(halvoTextOf(kCFBooleanTrue), std::nullopt); }

TEST(CFTextTest, LeavesNoObjectBehind) {
  const auto before = sim::FrameworkProbe::liveObjects();

  EXPECT_EQ(halvoTextOf(halvoCreateCFString("x").get()), "x");

  EXPECT_EQ(sim::FrameworkProbe::liveObjects(), before);
}

}  // namespace
}  // namespace halvo
