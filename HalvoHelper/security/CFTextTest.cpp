#include "HalvoHelper/security/CFText.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

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

INSTANTIATE_TEST_SUITE_P(
    Table, Utf8Text,
    testing::Values(TextRow{"Empty", ""}, TextRow{"Ascii", "user"}, TextRow{"TwoByteLetters", "Gr\xC3\xB6\xC3\x9F"},
                    TextRow{"Emoji", "\xF0\x9F\x94\x8A"}, TextRow{"EmbeddedNul", std::string("a\0b", 3)},
                    TextRow{"ByteOrderMark", "\xEF\xBB\xBFx"}, TextRow{"Long", std::string(100000, 'x')}),
    [](const auto& row) { return row.param.name; });

struct UnitsRow {
  const char* name;
  std::vector<UniChar> units;
  std::optional<std::string> text;
};

class TextInUnits : public testing::TestWithParam<UnitsRow> {};

TEST_P(TextInUnits, IsReadWholeOrNotAtAll) {
  const auto length = static_cast<CFIndex>(GetParam().units.size());
  const ScopedCF<CFStringRef> string(
      CFStringCreateWithCharacters(kCFAllocatorDefault, GetParam().units.data(), length));

  EXPECT_EQ(halvoTextOf(string.get()), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Table, TextInUnits,
                         testing::Values(UnitsRow{"Pair",
                                                  {'a', 0xD83D, 0xDD0A, 'b'},
                                                  "a\xF0\x9F\x94\x8A"
                                                  "b"},
                                         UnitsRow{"FirstHalfAlone", {0xD83D}, std::nullopt},
                                         UnitsRow{"SecondHalfAlone", {0xDD0A}, std::nullopt},
                                         UnitsRow{"FirstHalfAtTheEnd", {'u', 's', 'e', 'r', 0xD83D}, std::nullopt},
                                         UnitsRow{"FirstHalfInside", {'u', 0xD83D, 'r'}, std::nullopt},
                                         UnitsRow{"HalvesInTheWrongOrder", {0xDD0A, 0xD83D}, std::nullopt}),
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
