#include "platform/mac/PropertyListContainers.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

#include "platform/contract/Repeated.h"

namespace halvo {
namespace {

std::string bigEndian(std::uint64_t value, unsigned width) {
  std::string bytes;
  for (unsigned left = width; left > 0; --left) {
    bytes.push_back(left > 8 ? '\0' : static_cast<char>(value >> (8 * (left - 1))));
  }
  return bytes;
}

// A binary list with one object, at position 8, and a table that names it again and again. Its trailer says what is
// told here, true or not.
struct Binary {
  char marker = '\xA0';      // of the object: an empty array
  std::uint64_t offset = 8;  // every one in the table
  std::uint64_t offsets = 513;
  unsigned width = 2;
  std::optional<std::uint64_t> objects = {};  // else as many as offsets
  std::optional<std::uint64_t> table = {};    // else where it is

  [[nodiscard]] std::string text() const {
    std::string list = std::string("bplist00") + marker;
    const std::uint64_t begin = list.size();
    for (std::uint64_t i = 0; i < offsets; ++i) list += bigEndian(offset, width);
    constexpr char kReferenceWidth = 1;  // of no interest, and never the width of an offset here
    return list + std::string(6, '\0') + static_cast<char>(width) + kReferenceWidth +
           bigEndian(objects.value_or(offsets), 8) + bigEndian(0, 8) + bigEndian(table.value_or(begin), 8);
  }
};

struct BinaryRow {
  const char* name;
  Binary list;
  bool tooMany;
};

class BinaryContainers : public testing::TestWithParam<BinaryRow> {};

TEST_P(BinaryContainers, AreCounted) { EXPECT_EQ(holdsTooManyContainers(GetParam().list.text()), GetParam().tooMany); }

std::string binaryName(const testing::TestParamInfo<BinaryRow>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Limit, BinaryContainers,
                         testing::Values(BinaryRow{"FiveHundredAndTwelve", {.offsets = 512}, false},
                                         BinaryRow{"OneMore", {.offsets = 513}, true}),
                         binaryName);

INSTANTIATE_TEST_SUITE_P(Kind, BinaryContainers,
                         testing::Values(BinaryRow{"LongArrays", {.marker = '\xAF'}, true},
                                         BinaryRow{"OrderedSets", {.marker = '\xB0'}, true},
                                         BinaryRow{"Sets", {.marker = '\xC0'}, true},
                                         BinaryRow{"Dictionaries", {.marker = '\xD0'}, true},
                                         BinaryRow{"LongDictionaries", {.marker = '\xDF'}, true},
                                         BinaryRow{"Nulls", {.marker = '\x00'}, false},
                                         BinaryRow{"Texts", {.marker = '\x5F'}, false},
                                         BinaryRow{"Identifiers", {.marker = '\x80'}, false},
                                         BinaryRow{"LastBelowTheArrays", {.marker = '\x9F'}, false},
                                         BinaryRow{"FirstAboveTheDictionaries", {.marker = '\xE0'}, false},
                                         BinaryRow{"LastOfAll", {.marker = '\xFF'}, false}),
                         binaryName);

INSTANTIATE_TEST_SUITE_P(Width, BinaryContainers,
                         testing::Values(BinaryRow{"None", {.width = 0}, false}, BinaryRow{"Two", {.width = 2}, true},
                                         BinaryRow{"Three", {.width = 3}, true}, BinaryRow{"Eight", {.width = 8}, true},
                                         BinaryRow{"Nine", {.width = 9}, false}),
                         binaryName);

// What contradicts itself is left to the reader, which refuses it. The trailer has room for four offsets of eight
// bytes.
INSTANTIATE_TEST_SUITE_P(
    Contradiction, BinaryContainers,
    testing::Values(BinaryRow{"AnOffsetBehindTheLastObject", {.offsets = 513, .objects = 512}, false},
                    BinaryRow{"AsManyObjectsAsFit", {.offsets = 513, .width = 8, .objects = 517}, true},
                    BinaryRow{"OneObjectMoreThanFits", {.offsets = 513, .width = 8, .objects = 518}, false},
                    BinaryRow{"ObjectsBeyondAllMeasure", {.objects = UINT64_MAX}, false},
                    BinaryRow{"TableAtTheEnd", {.offsets = 0, .objects = 1, .table = 9 + 32}, false},
                    BinaryRow{"TableBehindTheEnd", {.offsets = 0, .objects = 1, .table = 9 + 32 + 1}, false},
                    BinaryRow{"TableBeyondAllMeasure", {.table = UINT64_MAX}, false},
                    BinaryRow{"OffsetsBeyondAllMeasure", {.offset = UINT64_MAX, .width = 8}, false}),
    binaryName);

// Containers stand behind each of these lists, where nothing belongs to them.
TEST(PropertyListContainersTest, NoByteBehindTheListIsLookedAt) {
  const std::string list = Binary{.offset = 9 + 513 * 2 + 32}.text();
  const std::string memory = list + std::string(8, '\xA0');

  EXPECT_FALSE(holdsTooManyContainers(std::string_view(memory).substr(0, list.size())));
}

TEST(PropertyListContainersTest, ABinaryListCutShortIsLeftToTheReader) {
  EXPECT_FALSE(holdsTooManyContainers("bplist00"));
}

TEST(PropertyListContainersTest, ABinaryListOneByteShorterThanItsTrailerIsLeftToTheReader) {
  EXPECT_FALSE(holdsTooManyContainers("bplist00" + std::string(23, '\x01')));
}

TEST(PropertyListContainersTest, FiveHundredAndTwelveInXMLAreAllowed) {
  EXPECT_FALSE(holdsTooManyContainers(repeated("<array>", 256) + repeated("<dict>", 256)));
}

TEST(PropertyListContainersTest, OneMoreInXMLIsTooMany) {
  EXPECT_TRUE(holdsTooManyContainers(repeated("<array>", 257) + repeated("<dict>", 256)));
}

TEST(PropertyListContainersTest, ArraysAloneInXMLMayBeTooMany) {
  EXPECT_TRUE(holdsTooManyContainers(repeated("<array>", 513)));
}

TEST(PropertyListContainersTest, XMLWithNulsHidesItsContainers) {
  EXPECT_TRUE(holdsTooManyContainers(std::string("\0<\0d\0i", 7)));
}

}  // namespace
}  // namespace halvo
