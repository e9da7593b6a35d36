#include "sim/platform/PropertyLists.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "platform/contract/PropertyLists.h"

namespace halvo::sim {
namespace {

using testing::Eq;
using testing::Optional;

// A Mac's writer makes an ASCII text of it, and whether a Mac's reader takes this form is not known.
TEST(BinaryPropertyListTest, AnEmptyUTF16TextIsEmpty) {
  EXPECT_THAT(readBinaryPropertyList(binaryDictionary("\x51v", "\x60")), Optional(Eq(PropertyList{{"v", ""}})));
}

TEST(BinaryPropertyListTest, OfARepeatedKeyTheFirstValueCounts) {
  const std::string twice = "\xD2" + binaryReference(1) + binaryReference(1) + binaryReference(2) + binaryReference(3);

  EXPECT_THAT(readBinaryPropertyList(binaryPropertyList({twice, "\x51v", "\x51x", "\x51y"})),
              Optional(Eq(PropertyList{{"v", "x"}})));
}

TEST(BinaryPropertyListTest, ObjectsThatShareBytesGiveNothing) {
  // The first text begins with a whole second one, and so does the table: two objects of more bytes than there are.
  std::string list = "bplist00\xD1\x01\x02\x5F\x10\x14\x5F\x10\x11";
  list += std::string(17, 'x');
  list += "\x08\x0B\x0E" + std::string(6, '\0') + "\x01\x01" + bigEndian(3, 8) + bigEndian(0, 8) + bigEndian(34, 8);

  EXPECT_EQ(readBinaryPropertyList(list), std::nullopt);
}

TEST(BinaryPropertyListTest, AListBehindItsTableGivesNothing) {
  std::string list = binaryDictionary("\x51v", "\x51x");
  list.insert(list.size() - 32, 1, '\0');

  EXPECT_EQ(readBinaryPropertyList(list), std::nullopt);
}

TEST(BinaryPropertyListTest, ATableOfMoreObjectsThanAreCountedGivesNothing) {
  std::string list = binaryDictionary("\x51v", "\x51x", {"\x50"});
  list.replace(list.size() - 24, 8, bigEndian(3, 8));

  EXPECT_EQ(readBinaryPropertyList(list), std::nullopt);
}

TEST(BinaryPropertyListTest, AKeyFurtherDownThatIsADictionaryGivesNothing) {
  const std::string inner = "\xD1" + binaryReference(3) + binaryReference(1);

  EXPECT_EQ(readBinaryPropertyList(binaryDictionary("\x51v", inner, {"\xD0"})), std::nullopt);
}

TEST(BinaryPropertyListTest, AKeyFurtherDownMayBeANumber) {
  const std::string inner = "\xD1" + binaryReference(3) + binaryReference(1);

  EXPECT_THAT(readBinaryPropertyList(binaryDictionary("\x51v", inner, {std::string("\x10\x07")})),
              Optional(Eq(PropertyList{{"v", PropertyListOther{}}})));
}

}  // namespace
}  // namespace halvo::sim
