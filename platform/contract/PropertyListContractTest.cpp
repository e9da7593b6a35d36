#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "platform/PropertyList.h"
#include "platform/contract/Repeated.h"

namespace halvo {
namespace {

using testing::Eq;
using testing::Optional;
using testing::TestParamInfo;
using testing::Values;

std::optional<PropertyList> read(std::string_view text) {
  return halvoReadPropertyList(std::as_bytes(std::span(text)));
}

std::string xml(std::string_view content) {
  return R"(<?xml version="1.0" encoding="UTF-8"?>)"
         R"(<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">)"
         R"(<plist version="1.0">)" +
         std::string(content) + "</plist>\n";
}

// {"CFBundleVersion": "2.1.0", "n": 7}: the objects, where each lies, and how to read those positions.
constexpr std::string_view kBinary(
    "bplist00"
    "\xD2\x01\x02\x03\x04"
    "\x5F\x10\x0F"
    "CFBundleVersion"
    "\x51n"
    "\x55"
    "2.1.0"
    "\x10\x07"
    "\x08\x0D\x1F\x21\x27"
    "\0\0\0\0\0\0\x01\x01"
    "\0\0\0\0\0\0\0\x05"
    "\0\0\0\0\0\0\0\0"
    "\0\0\0\0\0\0\0\x29",
    8 + 5 + 18 + 2 + 6 + 2 + 5 + 32);

// A binary list in which every array but the last holds the next one.
std::string nestedArrays(unsigned levels) {
  const auto number = [](unsigned value) {
    std::string bytes;
    for (const unsigned shift : {24U, 16U, 8U, 0U}) bytes.push_back(static_cast<char>(value >> shift));
    return bytes;
  };
  std::string list = "bplist00";
  std::string positions;
  for (unsigned i = 0; i < levels; ++i) {
    positions += number(static_cast<unsigned>(list.size()));
    list += i + 1 < levels ? "\xA1" + number(i + 1) : "\xA0";
  }
  const std::string zeros(4, '\0');
  const auto tableAt = static_cast<unsigned>(list.size());
  return list + positions + std::string(6, '\0') + "\x04\x04" + zeros + number(levels) + zeros + zeros + zeros +
         number(tableAt);
}

TEST(PropertyListContract, TextsOfAnXMLDictionaryAreRead) {
  EXPECT_THAT(read(xml("<dict><key>CFBundleVersion</key><string>2.1.0</string><key>e</key><string></string></dict>")),
              Optional(Eq(PropertyList{{"CFBundleVersion", "2.1.0"}, {"e", ""}})));
}

TEST(PropertyListContract, TextsOfABinaryDictionaryAreRead) {
  EXPECT_THAT(read(kBinary), Optional(Eq(PropertyList{{"CFBundleVersion", "2.1.0"}, {"n", PropertyListOther{}}})));
}

TEST(PropertyListContract, EntitiesAndNonASCIITextsAreRead) {
  EXPECT_THAT(read(xml("<dict><key>a</key><string>&lt;1 &amp; \U0001F3A7&gt;</string></dict>")),
              Optional(Eq(PropertyList{{"a", "<1 & \U0001F3A7>"}})));
}

TEST(PropertyListContract, EmptyDictionaryHasNoEntries) { EXPECT_THAT(read(xml("<dict/>")), Optional(PropertyList{})); }

struct OtherRow {
  const char* name;
  const char* value;
};

class PropertyListOtherValue : public testing::TestWithParam<OtherRow> {};

TEST_P(PropertyListOtherValue, IsThereButNoText) {
  EXPECT_THAT(read(xml(std::string("<dict><key>v</key>") + GetParam().value + "</dict>")),
              Optional(Eq(PropertyList{{"v", PropertyListOther{}}})));
}

INSTANTIATE_TEST_SUITE_P(Table, PropertyListOtherValue,
                         Values(OtherRow{"Integer", "<integer>210</integer>"}, OtherRow{"Real", "<real>2.1</real>"},
                                OtherRow{"True", "<true/>"}, OtherRow{"Data", "<data>AAAA</data>"},
                                OtherRow{"Date", "<date>2026-11-21T04:00:00Z</date>"},
                                OtherRow{"Array", "<array><string>2.1.0</string></array>"},
                                OtherRow{"Dictionary", "<dict><key>v</key><string>2.1.0</string></dict>"}),
                         [](const TestParamInfo<OtherRow>& row) { return row.param.name; });

struct RefusedRow {
  const char* name;
  std::string bytes;
};

class PropertyListRefused : public testing::TestWithParam<RefusedRow> {};

TEST_P(PropertyListRefused, GivesNothing) { EXPECT_EQ(read(GetParam().bytes), std::nullopt); }

INSTANTIATE_TEST_SUITE_P(
    Table, PropertyListRefused,
    Values(RefusedRow{"Empty", ""}, RefusedRow{"Garbage", "\x01\xFF\x02"},
           RefusedRow{"TopLevelArray", xml("<array><string>a</string></array>")},
           RefusedRow{"TopLevelText", xml("<string>a</string>")},
           RefusedRow{"XMLCutShort", "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>a</key><str"},
           RefusedRow{"NoElement", "<?xml version=\"1.0\"?>"}, RefusedRow{"OnlyTheBinaryMagic", "bplist00"},
           RefusedRow{"BinaryCutShort", std::string(kBinary.substr(0, kBinary.size() - 1))},
           RefusedRow{"BinaryWithoutItsObjects", std::string(kBinary.substr(0, 8)) + std::string(32, '\xFF')}),
    [](const TestParamInfo<RefusedRow>& row) { return row.param.name; });

TEST(PropertyListDepth, BinaryListNestedFarTooDeepGivesNothing) {
  EXPECT_EQ(read(nestedArrays(1'000'000)), std::nullopt);
}

TEST(PropertyListDepth, XMLListNestedFarTooDeepGivesNothing) {
  const std::string arrays = repeated("<array>", 1'000'000) + repeated("</array>", 1'000'000);
  EXPECT_EQ(read(xml("<dict><key>a</key>" + arrays + "</dict>")), std::nullopt);
}

}  // namespace
}  // namespace halvo
