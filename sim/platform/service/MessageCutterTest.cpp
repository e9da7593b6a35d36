#include "sim/platform/service/MessageCutter.h"

#include <gtest/gtest.h>

#include <string>

#include "sim/platform/service/WireFormat.h"
#include "sim/platform/testing/RawFrames.h"

namespace halvo::sim {
namespace {

constexpr auto kLargestBody = static_cast<std::uint32_t>(kMaxMessageBytes - kFrameHeaderBytes);

TEST(MessageCutterTest, HeaderHasToBeWholeFirst) {
  const auto piece = MessageCutter().next(frameHeader({.body = 1}).substr(0, kFrameHeaderBytes - 1));

  EXPECT_EQ(piece.length, 0U);
  EXPECT_FALSE(piece.endsMessage);
  EXPECT_FALSE(piece.tooLarge);
}

TEST(MessageCutterTest, MessageEndsWhereItsLengthsSay) {
  const auto piece = MessageCutter().next(frameHeader({.body = 3, .fields = 9}) + std::string(100, 'x'));

  EXPECT_EQ(piece.length, kFrameHeaderBytes + 16 + 3);
  EXPECT_TRUE(piece.endsMessage);
}

TEST(MessageCutterTest, LongMessageComesInPieces) {
  MessageCutter cutter;
  const auto first = cutter.next(frameHeader({.body = 50}) + std::string(20, 'x'));
  const auto second = cutter.next(std::string(100, 'x'));

  EXPECT_EQ(first.length, kFrameHeaderBytes + 20);
  EXPECT_FALSE(first.endsMessage);
  EXPECT_EQ(second.length, 30U);
  EXPECT_TRUE(second.endsMessage);
}

TEST(MessageCutterTest, NothingIsNoPiece) {
  MessageCutter cutter;
  cutter.next(frameHeader({.body = 50}));
  const auto piece = cutter.next("");

  EXPECT_EQ(piece.length, 0U);
  EXPECT_FALSE(piece.endsMessage);
}

TEST(MessageCutterTest, AfterAMessageComesAHeader) {
  MessageCutter cutter;
  cutter.next(frameHeader({.body = 1}) + "x");
  const auto piece = cutter.next(frameHeader({.body = 2}) + "yy");

  EXPECT_EQ(piece.length, kFrameHeaderBytes + 2);
  EXPECT_TRUE(piece.endsMessage);
}

TEST(MessageCutterTest, BigEndianLengthsAreReadAsSuch) {
  const auto piece = MessageCutter().next(frameHeader({.body = 1, .bigEndian = true}) + "xy");

  EXPECT_EQ(piece.length, kFrameHeaderBytes + 1);
}

struct SizeRow {
  const char* name;
  FrameLengths lengths;
  bool tooLarge;
};

class MessageSize : public testing::TestWithParam<SizeRow> {};

TEST_P(MessageSize, IsBounded) {
  EXPECT_EQ(MessageCutter().next(frameHeader(GetParam().lengths)).tooLarge, GetParam().tooLarge);
}

INSTANTIATE_TEST_SUITE_P(
    Table, MessageSize,
    testing::Values(SizeRow{"Empty", {}, false}, SizeRow{"Largest", {.body = kLargestBody}, false},
                    SizeRow{"OneMore", {.body = kLargestBody + 1}, true},
                    SizeRow{"LargestWithPaddedFields", {.body = kLargestBody - 16, .fields = 9}, false},
                    SizeRow{"OneMoreByPadding", {.body = kLargestBody - 15, .fields = 9}, true},
                    SizeRow{"BigEndian", {.body = kLargestBody + 1, .bigEndian = true}, true},
                    SizeRow{"LargestLengths", {.body = 0xFFFFFFFF, .fields = 0xFFFFFFFF}, true}),
    [](const testing::TestParamInfo<SizeRow>& row) { return row.param.name; });

}  // namespace
}  // namespace halvo::sim
