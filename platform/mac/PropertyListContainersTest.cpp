#include "platform/mac/PropertyListContainers.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/contract/Repeated.h"

namespace halvo {
namespace {

// A binary list of `count` empty arrays (0xA0), each with a two-byte offset.
std::string binaryWithArrays(int count) {
  std::string list = "bplist00" + std::string(static_cast<std::size_t>(count), '\xA0');
  const std::size_t table = list.size();
  const auto number = [](std::size_t value, int width) {
    std::string bytes;
    for (int i = width - 1; i >= 0; --i) bytes.push_back(static_cast<char>(value >> (8 * static_cast<unsigned>(i))));
    return bytes;
  };
  for (int i = 0; i < count; ++i) list += number(8 + static_cast<std::size_t>(i), 2);
  return list + std::string(6, '\0') + "\x02\x02" + number(static_cast<std::size_t>(count), 8) + number(0, 8) +
         number(table, 8);
}

TEST(PropertyListContainersTest, FiveHundredAndTwelveInXMLAreAllowed) {
  EXPECT_FALSE(holdsTooManyContainers(repeated("<array>", 256) + repeated("<dict>", 256)));
}

TEST(PropertyListContainersTest, OneMoreInXMLIsTooMany) {
  EXPECT_TRUE(holdsTooManyContainers(repeated("<array>", 256) + repeated("<dict>", 257)));
}

TEST(PropertyListContainersTest, FiveHundredAndTwelveInABinaryListAreAllowed) {
  EXPECT_FALSE(holdsTooManyContainers(binaryWithArrays(512)));
}

TEST(PropertyListContainersTest, OneMoreInABinaryListIsTooMany) {
  EXPECT_TRUE(holdsTooManyContainers(binaryWithArrays(513)));
}

TEST(PropertyListContainersTest, XMLWithNulsHidesItsContainers) {
  EXPECT_TRUE(holdsTooManyContainers(std::string("\0<\0d\0i", 7)));
}

TEST(PropertyListContainersTest, ABinaryListCutShortIsLeftToTheReader) {
  EXPECT_FALSE(holdsTooManyContainers("bplist00"));
}

TEST(PropertyListContainersTest, ATrailerThatPointsOutsideIsLeftToTheReader) {
  EXPECT_FALSE(holdsTooManyContainers("bplist00" + std::string(32, '\xFF')));
}

}  // namespace
}  // namespace halvo
