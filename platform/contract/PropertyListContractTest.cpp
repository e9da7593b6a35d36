#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "platform/PropertyList.h"
#include "platform/contract/PropertyLists.h"
#include "platform/contract/Repeated.h"

namespace halvo {
namespace {

using testing::Eq;
using testing::Optional;
using testing::SizeIs;
using testing::TestParamInfo;
using testing::Values;

std::optional<PropertyList> read(std::string_view text) {
  return halvoReadPropertyList(std::as_bytes(std::span(text)));
}

std::string xml(std::string_view content) { return xmlPropertyList(content); }

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

// A text of ASCII characters in UTF-16 with its byte order mark.
std::string littleEndianUTF16(std::string_view text) {
  std::string bytes = "\xFF\xFE";
  for (const char c : text) bytes += {c, '\0'};
  return bytes;
}

std::string bigEndianUTF16(std::string_view text) {
  std::string bytes = "\xFE\xFF";
  for (const char c : text) bytes += {'\0', c};
  return bytes;
}

constexpr const char* kVersion = "<dict><key>v</key><string>2.1.0</string></dict>";
constexpr const char* kTextKey = "\x51v";  // the text "v" in a binary list

struct TextRow {
  const char* name;
  std::string bytes;
  std::string value;  // of the entry "v"
};

class PropertyListText : public testing::TestWithParam<TextRow> {};

TEST_P(PropertyListText, IsReadAs) {
  EXPECT_THAT(read(GetParam().bytes), Optional(Eq(PropertyList{{"v", GetParam().value}})));
}

INSTANTIATE_TEST_SUITE_P(
    XML, PropertyListText,
    Values(TextRow{"Plain", xml(kVersion), "2.1.0"},
           TextRow{"Empty", xml("<dict><key>v</key><string></string></dict>"), ""},
           TextRow{"EmptyTag", xml("<dict><key>v</key><string/></dict>"), ""},
           TextRow{"Entities", xml("<dict><key>v</key><string>&lt;1 &amp; &#50;&gt;</string></dict>"), "<1 & 2>"},
           TextRow{"NonASCII", xml("<dict><key>v</key><string>\U0001F3A7</string></dict>"), "\U0001F3A7"},
           TextRow{"CharacterData", xml("<dict><key>v</key><string><![CDATA[<2>]]></string></dict>"), "<2>"},
           TextRow{"CommentsAround", xml("<!-- a --><dict><key>v</key><!-- b --><string>2.1.0</string></dict>"),
                   "2.1.0"},
           TextRow{"CommentBehindTheEnd", xml(kVersion) + "<!-- made by hand -->\n", "2.1.0"},
           TextRow{"WithoutTheOuterElement", std::string("<?xml version=\"1.0\"?>") + kVersion, "2.1.0"},
           TextRow{"RepeatedKeyWhoseLastValueCounts",
                   xml("<dict><key>v</key><string>1</string><key>v</key><string>2</string></dict>"), "2"},
           TextRow{"ByteOrderMark", "\xEF\xBB\xBF" + xml(kVersion), "2.1.0"},
           TextRow{"ByteOrderMarkAgainstTheDeclaration",
                   std::string("\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-16\"?>") + kVersion, "2.1.0"},
           TextRow{"LittleEndianUTF16", littleEndianUTF16(xml(kVersion)), "2.1.0"},
           TextRow{"BigEndianUTF16", bigEndianUTF16(xml(kVersion)), "2.1.0"}),
    [](const TestParamInfo<TextRow>& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Binary, PropertyListText,
    Values(TextRow{"ASCII",
                   binaryDictionary(kTextKey,
                                    "\x55"
                                    "2.1.0"),
                   "2.1.0"},
           TextRow{"Empty", binaryDictionary(kTextKey, "\x50"), ""},

           TextRow{"UTF16", binaryDictionary(kTextKey, std::string("\x63\xD8\x3C\xDF\xA7\0!", 7)), "\U0001F3A7!"},
           TextRow{"NulWithTextBehindIt",
                   binaryDictionary(kTextKey, std::string("\x53"
                                                          "2\0x",
                                                          4)),
                   std::string("2\0x", 3)},
           TextRow{"NulInUTF16", binaryDictionary(kTextKey, std::string("\x62\0\0\0x", 5)), std::string("\0x", 2)},
           TextRow{"UnpairedHighSurrogate", binaryDictionary(kTextKey, std::string("\x62\xD8\x3C\0x", 5)), "\uFFFDx"},
           TextRow{"UnpairedLowSurrogateAtTheEnd", binaryDictionary(kTextKey, std::string("\x62\0x\xDF\xA7", 5)),
                   "x\uFFFD"},
           TextRow{"LengthOfItsOwn",
                   binaryDictionary(kTextKey,
                                    "\x5F\x10\x10"
                                    "0123456789abcdef"),
                   "0123456789abcdef"}),
    [](const TestParamInfo<TextRow>& row) { return row.param.name; });

TEST(PropertyListContract, TextsAndOthersOfABinaryDictionaryAreRead) {
  EXPECT_THAT(read(kBinary), Optional(Eq(PropertyList{{"CFBundleVersion", "2.1.0"}, {"n", PropertyListOther{}}})));
}

TEST(PropertyListContract, EmptyKeyIsAKey) {
  EXPECT_THAT(read(xml("<dict><key/><string>a</string></dict>")), Optional(Eq(PropertyList{{"", "a"}})));
}

TEST(PropertyListContract, EmptyDictionaryHasNoEntries) { EXPECT_THAT(read(xml("<dict/>")), Optional(PropertyList{})); }

struct OtherRow {
  const char* name;
  std::string bytes;
};

class PropertyListOtherValue : public testing::TestWithParam<OtherRow> {};

TEST_P(PropertyListOtherValue, IsThereButNoText) {
  EXPECT_THAT(read(GetParam().bytes), Optional(Eq(PropertyList{{"v", PropertyListOther{}}})));
}

std::string xmlWithValue(std::string_view value) { return xml("<dict><key>v</key>" + std::string(value) + "</dict>"); }

INSTANTIATE_TEST_SUITE_P(
    XML, PropertyListOtherValue,
    Values(OtherRow{"Integer", xmlWithValue("<integer>210</integer>")},
           OtherRow{"NegativeInteger", xmlWithValue("<integer>-210</integer>")},
           OtherRow{"HexadecimalInteger", xmlWithValue("<integer>0xD2</integer>")},
           OtherRow{"LargestInteger", xmlWithValue("<integer>18446744073709551615</integer>")},
           OtherRow{"Real", xmlWithValue("<real>2.1</real>")},
           OtherRow{"RealWithExponent", xmlWithValue("<real>-21e-1</real>")},
           OtherRow{"Infinity", xmlWithValue("<real>+infinity</real>")}, OtherRow{"True", xmlWithValue("<true/>")},
           OtherRow{"FalseInTwoTags", xmlWithValue("<false></false>")},
           OtherRow{"Data", xmlWithValue("<data>\n\tAAAA\n\t</data>")},
           OtherRow{"Date", xmlWithValue("<date>2026-11-21T04:00:00Z</date>")},
           OtherRow{"Array", xmlWithValue("<array><string>2.1.0</string></array>")},
           OtherRow{"Dictionary", xmlWithValue("<dict><key>v</key><string>2.1.0</string></dict>")}),
    [](const TestParamInfo<OtherRow>& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Binary, PropertyListOtherValue,
    Values(OtherRow{"True", binaryDictionary(kTextKey, "\x09")}, OtherRow{"False", binaryDictionary(kTextKey, "\x08")},
           OtherRow{"Integer", binaryDictionary(kTextKey, "\x11\x01\x02")},
           OtherRow{"Real", binaryDictionary(kTextKey, "\x23" + bigEndian(0, 8))},
           OtherRow{"Date", binaryDictionary(kTextKey, "\x33" + bigEndian(0, 8))},
           OtherRow{"Data", binaryDictionary(kTextKey, "\x42\xFF\xFE")},
           OtherRow{"EmptyArray", binaryDictionary(kTextKey, "\xA0")},
           OtherRow{"Array", binaryDictionary(kTextKey, "\xA1" + binaryReference(1))},
           OtherRow{"Dictionary", binaryDictionary(kTextKey, "\xD1" + binaryReference(1) + binaryReference(1))}),
    [](const TestParamInfo<OtherRow>& row) { return row.param.name; });

struct RefusedRow {
  const char* name;
  std::string bytes;
};

class PropertyListRefused : public testing::TestWithParam<RefusedRow> {};

TEST_P(PropertyListRefused, GivesNothing) { EXPECT_EQ(read(GetParam().bytes), std::nullopt); }

INSTANTIATE_TEST_SUITE_P(Bytes, PropertyListRefused,
                         Values(RefusedRow{"Empty", ""}, RefusedRow{"Garbage", "\x01\xFF\x02"},
                                RefusedRow{"OnlyTheBinaryMagic", "bplist00"}),
                         [](const TestParamInfo<RefusedRow>& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    XML, PropertyListRefused,
    Values(
        RefusedRow{"NoElement", "<?xml version=\"1.0\"?>"}, RefusedRow{"NothingInside", xml("")},
        RefusedRow{"TopLevelArray", xml("<array><string>a</string></array>")},
        RefusedRow{"TopLevelText", xml("<string>a</string>")},
        RefusedRow{"CutInATag", "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>a</key><str"},
        RefusedRow{"CutBehindTheDictionary", std::string("<?xml version=\"1.0\"?><plist version=\"1.0\">") + kVersion},
        RefusedRow{"TextBehindTheEnd", xml(kVersion) + "x"},
        RefusedRow{"TextBehindTheDictionary", xml(std::string(kVersion) + "x")},
        RefusedRow{"TextBetweenEntries", xml("<dict>x<key>v</key><string>a</string></dict>")},
        RefusedRow{"SecondListBehindTheEnd", xml(kVersion) + xml(kVersion)},
        RefusedRow{"TwoDictionaries", xml(std::string(kVersion) + kVersion)},
        RefusedRow{"TwoDictionariesWithoutTheOuterElement", std::string(kVersion) + kVersion},
        RefusedRow{"KeyWithoutValue", xml("<dict><key>v</key><string>a</string><key>w</key></dict>")},
        RefusedRow{"ValueWithoutKey", xml("<dict><string>a</string></dict>")},
        RefusedRow{"KeyThatIsNoText", xml("<dict><integer>1</integer><string>a</string></dict>")},
        RefusedRow{"TagsThatDoNotMatch", xml("<dict><key>v</key><string>a</integer></dict>")},
        RefusedRow{"UnknownElement", xmlWithValue("<text>a</text>")},
        RefusedRow{"ElementInAText", xmlWithValue("<string>a<true/></string>")},
        RefusedRow{"CommentInAText", xmlWithValue("<string>2<!-- -->1</string>")},
        RefusedRow{"IntegerThatIsNone", xmlWithValue("<integer>2x</integer>")},
        RefusedRow{"EmptyInteger", xmlWithValue("<integer></integer>")},
        RefusedRow{"IntegerThatIsASign", xmlWithValue("<integer>-</integer>")},
        RefusedRow{"HexadecimalIntegerWithoutDigits", xmlWithValue("<integer>0x</integer>")},
        RefusedRow{"IntegerTooLarge", xmlWithValue("<integer>18446744073709551616</integer>")},
        RefusedRow{"IntegerTooSmall", xmlWithValue("<integer>-9223372036854775809</integer>")},
        RefusedRow{"RealThatIsNone", xmlWithValue("<real>2.1.0</real>")},
        RefusedRow{"EmptyReal", xmlWithValue("<real/>")},
        RefusedRow{"DateThatIsNone", xmlWithValue("<date>yesterday</date>")},
        RefusedRow{"TrueWithText", xmlWithValue("<true>1</true>")}, RefusedRow{"EmptyDataTag", xmlWithValue("<data/>")},
        RefusedRow{"UnknownEntity", xmlWithValue("<string>&nbsp;</string>")},
        RefusedRow{"EntityOfItsOwn",
                   "<!DOCTYPE plist [<!ENTITY x \"9\">]><plist><dict><key>v</key><string>&x;</string></dict></plist>"},
        RefusedRow{"DeclarationsOfItsOwn", std::string("<!DOCTYPE plist [<!-- > -->]>") + kVersion},
        RefusedRow{"DocumentTypeThatEndsInQuotes", std::string("<!DOCTYPE plist SYSTEM \"a>b\">") + kVersion},
        RefusedRow{"NulInAText", xmlWithValue(std::string_view("<string>a\0b</string>", 20))},
        RefusedRow{"NulInAnArray", xmlWithValue(std::string_view("<array><string>\0</string></array>", 33))},
        RefusedRow{"NulByItsNumber", xmlWithValue("<string>a&#0;b</string>")},
        RefusedRow{"NulByItsHexadecimalNumber", xmlWithValue("<string>a&#x00;b</string>")},
        RefusedRow{"NulInUTF16", littleEndianUTF16(xmlWithValue(std::string_view("<string>a\0b</string>", 20)))},
        RefusedRow{"UTF16WithoutItsByteOrderMark", littleEndianUTF16(kVersion).substr(2)},
        RefusedRow{"IllFormedUTF8InAText", xmlWithValue("<string>\xFF</string>")},
        RefusedRow{"CutUTF8InAText", xmlWithValue("<string>\xC3</string>")},
        RefusedRow{"OverlongUTF8InAText", xmlWithValue("<string>\xC0\xAF</string>")},
        RefusedRow{"IllFormedUTF8InAKey", xml("<dict><key>\xFF</key><string>a</string></dict>")}),
    [](const TestParamInfo<RefusedRow>& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Binary, PropertyListRefused,
    Values(RefusedRow{"CutShort", std::string(kBinary.substr(0, kBinary.size() - 1))},
           RefusedRow{"WithoutItsObjects", std::string(kBinary.substr(0, 8)) + std::string(32, '\xFF')},
           RefusedRow{"TopLevelArray", binaryPropertyList({"\xA0"})},
           RefusedRow{"TopLevelText", binaryPropertyList({"\x51v"})},
           RefusedRow{"KeyThatIsNoText", binaryDictionary("\x10\x01", "\x51v")},
           RefusedRow{"KeyThatIsADictionary", binaryDictionary("\xD0", "\x51v")},
           RefusedRow{"NonASCIIInAnASCIIText", binaryDictionary(kTextKey, "\x51\xFF")},
           RefusedRow{"TextLongerThanTheList", binaryDictionary(kTextKey, "\x5F\x13" + bigEndian(SIZE_MAX / 2, 8))},
           RefusedRow{"UTF16LongerThanTheList", binaryDictionary(kTextKey, "\x6F\x13" + bigEndian(SIZE_MAX / 4, 8))},
           RefusedRow{"ArrayLongerThanTheList", binaryDictionary(kTextKey, "\xAF\x13" + bigEndian(SIZE_MAX / 16, 8))},
           RefusedRow{"MemberThatIsNotThere", binaryDictionary(kTextKey, "\xA1" + binaryReference(3))},
           RefusedRow{"UnknownKindOfObject", binaryDictionary(kTextKey, "\xE0")},
           RefusedRow{"ArrayThatHoldsItself", binaryDictionary(kTextKey, "\xA1" + binaryReference(2))},
           RefusedRow{"DictionaryThatHoldsItself", binaryDictionary(kTextKey, "\xA1" + binaryReference(0))}),
    [](const TestParamInfo<RefusedRow>& row) { return row.param.name; });

// One dictionary and, in its entry "v", arrays: the limit counts all of them.
std::string xmlWithContainers(int count) {
  return xmlWithValue("<array>" + repeated("<array/>", count - 2) + "</array>");
}

std::string xmlWithNestedContainers(int count) {
  return xmlWithValue(repeated("<array>", count - 1) + repeated("</array>", count - 1));
}

std::string binaryWithNestedContainers(std::size_t count) {
  std::vector<std::string> arrays;
  for (std::size_t i = 3; i <= count; ++i) arrays.push_back("\xA1" + binaryReference(i));
  arrays.push_back("\xA0");
  return binaryDictionary(kTextKey, arrays.front(), {arrays.begin() + 1, arrays.end()});
}

// The same without one being in another.
std::string binaryWithContainers(std::size_t count) {
  std::string members;
  for (std::size_t i = 3; i <= count; ++i) members += binaryReference(i);
  return binaryDictionary(kTextKey, "\xAF\x12" + bigEndian(count - 2, 4) + members,
                          std::vector<std::string>(count - 2, "\xA0"));
}

INSTANTIATE_TEST_SUITE_P(FiveHundredAndTwelveContainers, PropertyListOtherValue,
                         Values(OtherRow{"InXML", xmlWithContainers(512)},
                                OtherRow{"InEachOtherInXML", xmlWithNestedContainers(512)},
                                OtherRow{"InUTF16", littleEndianUTF16(xmlWithContainers(512))},
                                OtherRow{"InBinary", binaryWithContainers(512)},
                                OtherRow{"InEachOtherInBinary", binaryWithNestedContainers(512)}),
                         [](const TestParamInfo<OtherRow>& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(OneContainerMore, PropertyListRefused,
                         Values(RefusedRow{"InXML", xmlWithContainers(513)},
                                RefusedRow{"InEachOtherInXML", xmlWithNestedContainers(513)},
                                RefusedRow{"InUTF16", littleEndianUTF16(xmlWithContainers(513))},
                                RefusedRow{"InBinary", binaryWithContainers(513)},
                                RefusedRow{"InEachOtherInBinary", binaryWithNestedContainers(513)}),
                         [](const TestParamInfo<RefusedRow>& row) { return row.param.name; });

TEST(PropertyListDepth, XMLListNestedFarTooDeepGivesNothing) {
  EXPECT_EQ(read(xmlWithNestedContainers(1'000'000)), std::nullopt);
}

TEST(PropertyListDepth, BinaryListNestedFarTooDeepGivesNothing) {
  EXPECT_EQ(read(binaryWithNestedContainers(1'000'000)), std::nullopt);
}

// Arrays that each name the next one eight times: written out they would hold more than any memory.
TEST(PropertyListContract, AListThatNamesOneArrayManyTimesIsReadAsItStands) {
  std::vector<std::string> arrays;
  for (std::size_t i = 3; i < 43; ++i) {
    const std::string next = binaryReference(i);
    arrays.push_back("\xA8" + next + next + next + next + next + next + next + next);
  }
  arrays.push_back("\xA0");

  EXPECT_THAT(read(binaryDictionary(kTextKey, arrays.front(), {arrays.begin() + 1, arrays.end()})),
              Optional(Eq(PropertyList{{"v", PropertyListOther{}}})));
}

// `count` keys of one byte that all have the same value, a text of a mebibyte.
std::string binaryWithALongText(std::size_t count) {
  std::string keys;
  std::string values;
  std::vector<std::string> objects(1);
  for (std::size_t i = 1; i <= count; ++i) {
    keys += binaryReference(i);
    values += binaryReference(count + 1);
    objects.push_back("\x51" + std::string(1, static_cast<char>(i)));
  }
  objects.front() = "\xDF\x10" + bigEndian(count, 1) + keys + values;
  objects.push_back("\x5F\x12" + bigEndian(1024UL * 1024, 4) + std::string(1024UL * 1024, 'x'));
  return binaryPropertyList(objects);
}

TEST(PropertyListContract, ALongTextThatThreeKeysNameIsRead) {
  EXPECT_THAT(read(binaryWithALongText(3)), Optional(SizeIs(3)));
}

TEST(PropertyListContract, ALongTextThatManyKeysNameGivesNothing) {
  EXPECT_EQ(read(binaryWithALongText(4)), std::nullopt);
}

}  // namespace
}  // namespace halvo
