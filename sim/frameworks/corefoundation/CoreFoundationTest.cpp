#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "HalvoHelper/security/ScopedCF.h"
#include "sim/frameworks/corefoundation/Types.h"
#include "sim/frameworks/testing/FrameworkProbe.h"

namespace halvo::sim {
namespace {

ScopedCF<CFStringRef> makeString(std::string_view text) {
  return ScopedCF<CFStringRef>(CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
                                                       static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, 0));
}

ScopedCF<CFNumberRef> makeNumber(std::int64_t value) {
  return ScopedCF<CFNumberRef>(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &value));
}

ScopedCF<CFMutableDictionaryRef> makeDictionary() {
  return ScopedCF<CFMutableDictionaryRef>(CFDictionaryCreateMutable(
      kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

TEST(CFObjectTest, ANullReferenceEndsTheProcess) {
  EXPECT_DEATH(CFRelease(nullptr), "CFRelease was given a null reference");
}

TEST(CFBooleanTest, IsAnotherTypeThanANumber) {
  const auto one = makeNumber(1);

  EXPECT_EQ(CFGetTypeID(kCFBooleanTrue), CFBooleanGetTypeID());
  EXPECT_EQ(CFGetTypeID(one.get()), CFNumberGetTypeID());
  EXPECT_NE(CFBooleanGetTypeID(), CFNumberGetTypeID());
  EXPECT_NE(CFBooleanGetValue(kCFBooleanTrue), 0);
  EXPECT_EQ(CFBooleanGetValue(kCFBooleanFalse), 0);
}

struct IntegerRow {
  const char* name;
  double value;
  bool exact;
  std::int64_t stored;
};

class NumberAsInteger : public testing::TestWithParam<IntegerRow> {};

TEST_P(NumberAsInteger, IsExactOrTheBestAttempt) {
  std::int64_t stored = 0;

  const ScopedCF<CFNumberRef> number(new __CFNumber(GetParam().value));

  const bool exact = CFNumberGetValue(number.get(), kCFNumberSInt64Type, &stored) != 0;

  EXPECT_EQ(exact, GetParam().exact);
  EXPECT_EQ(stored, GetParam().stored);
}

INSTANTIATE_TEST_SUITE_P(
    Table, NumberAsInteger,
    testing::Values(IntegerRow{"Whole", 6.0, true, 6}, IntegerRow{"Fraction", 6.5, false, 6},
                    IntegerRow{"TooLarge", 9223372036854775808.0, false, std::numeric_limits<std::int64_t>::max()},
                    IntegerRow{"Smallest", -9223372036854775808.0, true, std::numeric_limits<std::int64_t>::min()},
                    IntegerRow{"TooSmall", -1e300, false, std::numeric_limits<std::int64_t>::min()},
                    IntegerRow{"NotANumber", std::numeric_limits<double>::quiet_NaN(), false, 0}),
    [](const auto& row) { return row.param.name; });

TEST(CFDictionaryTest, KeysAreComparedByValueAndSettingAgainReplaces) {
  const auto before = FrameworkProbe::liveObjects();
  auto dictionary = makeDictionary();
  CFDictionarySetValue(dictionary.get(), makeString("key").get(), makeNumber(1).get());

  CFDictionarySetValue(dictionary.get(), makeString("key").get(), kCFBooleanFalse);

  EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 1);
  EXPECT_EQ(FrameworkProbe::liveObjects(), before + 2);
  dictionary.reset();
  EXPECT_EQ(FrameworkProbe::liveObjects(), before);
}

TEST(CFDictionaryTest, WithoutCallbacksKeysAreComparedByAddress) {
  const auto key = makeString("key");
  const auto same = makeString("key");
  const void* keys[] = {key.get(), same.get()};
  const void* values[] = {kCFBooleanTrue, kCFBooleanTrue};
  const ScopedCF<CFDictionaryRef> dictionary(CFDictionaryCreate(nullptr, keys, values, 2, nullptr, nullptr));

  EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 2);
}

TEST(CFDictionaryTest, ADictionaryThatCannotChangeEndsTheProcess) {
  const ScopedCF<CFDictionaryRef> dictionary(CFDictionaryCreate(nullptr, nullptr, nullptr, 0, nullptr, nullptr));

  EXPECT_DEATH(
      CFDictionarySetValue(const_cast<CFMutableDictionaryRef>(dictionary.get()), kCFBooleanTrue, kCFBooleanTrue),
      "cannot change");
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
  const ScopedCF<CFStringRef> string(CFStringCreateWithCharacters(nullptr, units.data(), 3));
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

TEST(CFStringTest, AByteOrderMarkIsTextUnlessTheRepresentationIsExternal) {
  const auto* const bytes = reinterpret_cast<const UInt8*>("\xEF\xBB\xBFx");
  const ScopedCF<CFStringRef> kept(CFStringCreateWithBytes(nullptr, bytes, 4, kCFStringEncodingUTF8, 0));
  const ScopedCF<CFStringRef> dropped(CFStringCreateWithBytes(nullptr, bytes, 4, kCFStringEncodingUTF8, 1));

  EXPECT_EQ(CFStringGetLength(kept.get()), 2);
  EXPECT_EQ(CFStringGetLength(dropped.get()), 1);
}

TEST(CFStringTest, AnObjectOfAnotherTypeEndsTheProcess) {
  EXPECT_DEATH(CFStringGetLength(reinterpret_cast<CFStringRef>(kCFBooleanTrue)), "not a string");
}

}  // namespace
}  // namespace halvo::sim
