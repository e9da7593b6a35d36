#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>

#include "sim/frameworks/testing/FrameworkProbe.h"
#include "sim/frameworks/testing/Owned.h"

namespace halvo::sim {
namespace {

Owned<CFStringRef> makeString(std::string_view text) {
  return Owned<CFStringRef>(CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
                                                    static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, 0));
}

std::string bytesOf(CFStringRef string, CFRange range, CFIndex room, CFIndex& converted) {
  std::array<UInt8, 64> buffer{};
  CFIndex used = 0;
  converted = CFStringGetBytes(string, range, kCFStringEncodingUTF8, 0, 0, buffer.data(), room, &used);
  return {buffer.begin(), buffer.begin() + used};
}

struct TextRow {
  const char* name;
  std::string_view text;
  CFIndex length;  // -1 when the text is refused
};

class StringCreation : public testing::TestWithParam<TextRow> {};

TEST_P(StringCreation, CountsUTF16UnitsAndRefusesIllFormedText) {
  const auto string = makeString(GetParam().text);

  EXPECT_EQ(string ? CFStringGetLength(string.get()) : -1, GetParam().length);
}

INSTANTIATE_TEST_SUITE_P(
    Table, StringCreation,
    testing::Values(TextRow{"Nothing", "", 0}, TextRow{"ASCII", "halvo", 5}, TextRow{"TwoBytes", "\xC3\xA9", 1},
                    TextRow{"ThreeBytes", "\xE2\x82\xAC", 1}, TextRow{"FourBytes", "\xF0\x9F\x8E\xB5", 2},
                    TextRow{"EmbeddedNul", std::string_view("a\0b", 3), 3},
                    TextRow{"HighestCodePoint", "\xF4\x8F\xBF\xBF", 2},
                    TextRow{"AboveTheHighest", "\xF4\x90\x80\x80", -1}, TextRow{"Overlong", "\xC0\x80", -1},
                    TextRow{"OverlongThree", "\xE0\x80\xAF", -1}, TextRow{"Surrogate", "\xED\xA0\x80", -1},
                    TextRow{"CutShort", "\xE2\x82", -1}, TextRow{"LoneContinuation", "\x80", -1},
                    TextRow{"Latin1", "caf\xE9", -1}, TextRow{"FiveByteLead", "\xF8\x88\x80\x80\x80", -1}),
    [](const auto& row) { return row.param.name; });

TEST(CFStringTest, TextComesBackAsItWasGiven) {
  const auto string = makeString("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xB5");
  CFIndex converted = 0;

  EXPECT_EQ(bytesOf(string.get(), CFRangeMake(0, 5), 64, converted), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xB5");
  EXPECT_EQ(converted, 5);
}

TEST(CFStringTest, ANullBufferAsksForTheSize) {
  const auto string = makeString("\xE2\x82\xAC!");
  CFIndex used = 0;

  EXPECT_EQ(CFStringGetBytes(string.get(), CFRangeMake(0, 2), kCFStringEncodingUTF8, 0, 0, nullptr, 0, &used), 2);
  EXPECT_EQ(used, 4);
}

TEST(CFStringTest, ABufferTooSmallTakesWholeCharactersOnly) {
  const auto string = makeString("a\xE2\x82\xAC");
  CFIndex converted = 0;

  EXPECT_EQ(bytesOf(string.get(), CFRangeMake(0, 2), 3, converted), "a");
  EXPECT_EQ(converted, 1);
}

TEST(CFStringTest, HalfAPairIsNotConverted) {
  const auto string = makeString("\xF0\x9F\x8E\xB5");
  CFIndex converted = 7;

  EXPECT_EQ(bytesOf(string.get(), CFRangeMake(0, 1), 64, converted), "");
  EXPECT_EQ(converted, 0);
}

TEST(CFStringTest, AByteStandsForWhatCannotBeConvertedIfOneIsGiven) {
  const std::array<UniChar, 3> units = {'a', 0xD83C, 'b'};
  const Owned<CFStringRef> string(CFStringCreateWithCharacters(nullptr, units.data(), 3));
  std::array<UInt8, 3> buffer{};
  CFIndex used = 0;

  EXPECT_EQ(CFStringGetBytes(string.get(), CFRangeMake(0, 3), kCFStringEncodingUTF8, '?', 0, buffer.data(), 3, &used),
            3);
  EXPECT_EQ(used, 3);
  EXPECT_EQ(std::string(buffer.begin(), buffer.end()), "a?b");
}

TEST(CFStringTest, ARangeOutsideTheStringEndsTheProcess) {
  const auto string = makeString("abc");
  CFIndex used = 0;

  EXPECT_DEATH(CFStringGetBytes(string.get(), CFRangeMake(2, 2), kCFStringEncodingUTF8, 0, 0, nullptr, 0, &used),
               "outside the string");
}

TEST(CFStringTest, ACStringNeedsRoomForItsNul) {
  const auto string = makeString("abc");
  std::array<char, 4> buffer{};

  EXPECT_EQ(CFStringGetCString(string.get(), buffer.data(), 3, kCFStringEncodingUTF8), 0);
  EXPECT_NE(CFStringGetCString(string.get(), buffer.data(), 4, kCFStringEncodingUTF8), 0);
  EXPECT_STREQ(buffer.data(), "abc");
}

TEST(CFStringTest, AByteOrderMarkIsTextUnlessTheRepresentationIsExternal) {
  const auto* const bytes = reinterpret_cast<const UInt8*>("\xEF\xBB\xBFx");
  const Owned<CFStringRef> kept(CFStringCreateWithBytes(nullptr, bytes, 4, kCFStringEncodingUTF8, 0));
  const Owned<CFStringRef> dropped(CFStringCreateWithBytes(nullptr, bytes, 4, kCFStringEncodingUTF8, 1));

  EXPECT_EQ(CFStringGetLength(kept.get()), 2);
  EXPECT_EQ(CFStringGetLength(dropped.get()), 1);
}

TEST(CFStringTest, AConstantStringIsOneObjectThatNobodyCounts) {
  const auto before = FrameworkProbe::liveObjects();
  const std::string name = "halvo";
  const Owned<CFStringRef> made(CFStringCreateWithCString(nullptr, name.c_str(), kCFStringEncodingUTF8));

  EXPECT_EQ(CFSTR("halvo"), CFSTR("halvo"));
  EXPECT_NE(CFEqual(CFSTR("halvo"), made.get()), 0);
  EXPECT_EQ(FrameworkProbe::liveObjects(), before + 1);
}

TEST(CFStringTest, AnObjectOfAnotherTypeEndsTheProcess) {
  EXPECT_DEATH(CFStringGetLength(reinterpret_cast<CFStringRef>(kCFBooleanTrue)), "not a string");
}

}  // namespace
}  // namespace halvo::sim
