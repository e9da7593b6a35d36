#include "HalvoHelper/security/CFText.h"

#include <gtest/gtest.h>

#include "sim/frameworks/testing/FrameworkProbe.h"

namespace halvo {
namespace {

class Utf8Text : public testing::TestWithParam<std::string> {};

TEST_P(Utf8Text, ComesBackAsItWas) {
  const ScopedCF<CFStringRef> string = halvoCreateCFString(GetParam());

  EXPECT_EQ(halvoTextOf(string.get()), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Table, Utf8Text,
                         testing::Values("", "user",
                                         "Gr\xC3\xB6\xC3\x9F"
                                         "e",
                                         "\xF0\x9F\x94\x8A", std::string("a\0b", 3), std::string(100000, 'x')));

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
