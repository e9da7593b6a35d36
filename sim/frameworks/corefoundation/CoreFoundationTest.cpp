#include <CoreFoundation/CoreFoundation.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

#include "sim/frameworks/testing/FrameworkProbe.h"
#include "sim/frameworks/testing/Owned.h"

namespace halvo::sim {
namespace {

Owned<CFStringRef> makeString(std::string_view text) {
  return Owned<CFStringRef>(CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
                                                    static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, 0));
}

Owned<CFNumberRef> makeNumber(std::int64_t value) {
  return Owned<CFNumberRef>(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &value));
}

Owned<CFNumberRef> makeNumber(double value) {
  return Owned<CFNumberRef>(CFNumberCreate(kCFAllocatorDefault, kCFNumberDoubleType, &value));
}

Owned<CFMutableDictionaryRef> makeDictionary() {
  return Owned<CFMutableDictionaryRef>(CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks,
                                                                 &kCFTypeDictionaryValueCallBacks));
}

TEST(CFObjectTest, ANullReferenceEndsTheProcess) {
  EXPECT_DEATH(CFRelease(nullptr), "CFRelease was given a null reference");
  EXPECT_DEATH(CFRetain(nullptr), "CFRetain was given a null reference");
}

TEST(CFObjectTest, TheLastReferenceDestroysTheObject) {
  const auto before = FrameworkProbe::liveObjects();
  CFStringRef string = makeString("x").release();
  EXPECT_EQ(CFRetain(string), string);

  CFRelease(string);
  EXPECT_EQ(FrameworkProbe::liveObjects(), before + 1);
  CFRelease(string);
  EXPECT_EQ(FrameworkProbe::liveObjects(), before);
}

TEST(CFObjectTest, EqualIsByValueWithinOneType) {
  const auto one = makeNumber(std::int64_t{1});
  const auto alsoOne = makeNumber(1.0);

  EXPECT_NE(CFEqual(one.get(), alsoOne.get()), 0);
  EXPECT_EQ(CFEqual(one.get(), makeNumber(1.5).get()), 0);
  EXPECT_EQ(CFEqual(one.get(), kCFBooleanTrue), 0);
}

TEST(CFBooleanTest, IsAnotherTypeThanANumber) {
  const auto one = makeNumber(std::int64_t{1});

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

  const bool exact = CFNumberGetValue(makeNumber(GetParam().value).get(), kCFNumberSInt64Type, &stored) != 0;

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

TEST(CFNumberTest, ALargeIntegerDoesNotFitASmallOne) {
  std::int32_t stored = 0;

  EXPECT_EQ(CFNumberGetValue(makeNumber(std::int64_t{1} << 32).get(), kCFNumberSInt32Type, &stored), 0);
}

TEST(CFNumberTest, KeepsTheTypeItWasMadeWith) {
  const short value = -3;
  const Owned<CFNumberRef> number(CFNumberCreate(nullptr, kCFNumberShortType, &value));
  double stored = 0;

  EXPECT_EQ(CFNumberGetType(number.get()), kCFNumberShortType);
  EXPECT_EQ(CFNumberIsFloatType(number.get()), 0);
  EXPECT_NE(CFNumberIsFloatType(makeNumber(0.5).get()), 0);
  EXPECT_NE(CFNumberGetValue(number.get(), kCFNumberDoubleType, &stored), 0);
  EXPECT_EQ(stored, -3.0);
}

TEST(CFDataTest, HoldsACopyOfTheBytes) {
  std::array<UInt8, 3> bytes = {1, 2, 3};
  const Owned<CFDataRef> data(CFDataCreate(nullptr, bytes.data(), 3));
  bytes = {};

  CFDataGetBytes(data.get(), CFRangeMake(1, 2), bytes.data());

  EXPECT_EQ(CFDataGetLength(data.get()), 3);
  EXPECT_EQ(CFDataGetBytePtr(data.get())[0], 1);
  EXPECT_THAT(bytes, testing::ElementsAre(2, 3, 0));
}

TEST(CFDictionaryTest, KeysAreComparedByValue) {
  const auto dictionary = makeDictionary();
  CFDictionarySetValue(dictionary.get(), makeString("key").get(), kCFBooleanTrue);

  EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), makeString("key").get()), kCFBooleanTrue);
  EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), makeString("other").get()), nullptr);
}

TEST(CFDictionaryTest, WithoutCallbacksKeysAreComparedByAddress) {
  const auto key = makeString("key");
  const void* keys[] = {key.get()};
  const void* values[] = {kCFBooleanTrue};
  const Owned<CFDictionaryRef> dictionary(CFDictionaryCreate(nullptr, keys, values, 1, nullptr, nullptr));

  EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), key.get()), kCFBooleanTrue);
  EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), makeString("key").get()), nullptr);
}

TEST(CFDictionaryTest, SettingAgainReplacesTheValue) {
  const auto before = FrameworkProbe::liveObjects();
  auto dictionary = makeDictionary();
  CFDictionarySetValue(dictionary.get(), CFSTR("key"), makeNumber(std::int64_t{1}).get());

  CFDictionarySetValue(dictionary.get(), CFSTR("key"), kCFBooleanFalse);

  EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 1);
  EXPECT_EQ(FrameworkProbe::liveObjects(), before + 1);
  dictionary.reset();
  EXPECT_EQ(FrameworkProbe::liveObjects(), before);
}

TEST(CFDictionaryTest, ListsItsKeysAndValues) {
  const auto dictionary = makeDictionary();
  CFDictionarySetValue(dictionary.get(), CFSTR("a"), kCFBooleanTrue);
  CFDictionarySetValue(dictionary.get(), CFSTR("b"), kCFBooleanFalse);
  std::vector<const void*> keys(2);
  std::vector<const void*> values(2);

  CFDictionaryGetKeysAndValues(dictionary.get(), keys.data(), values.data());

  EXPECT_THAT(keys, testing::ElementsAre(CFSTR("a"), CFSTR("b")));
  EXPECT_THAT(values, testing::ElementsAre(kCFBooleanTrue, kCFBooleanFalse));
}

TEST(CFDictionaryTest, ADictionaryThatCannotChangeEndsTheProcess) {
  const Owned<CFDictionaryRef> dictionary(CFDictionaryCreate(nullptr, nullptr, nullptr, 0, nullptr, nullptr));

  EXPECT_DEATH(CFDictionarySetValue(const_cast<CFMutableDictionaryRef>(dictionary.get()), CFSTR("a"), kCFBooleanTrue),
               "cannot change");
}

}  // namespace
}  // namespace halvo::sim
