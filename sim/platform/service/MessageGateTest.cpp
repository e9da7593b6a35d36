#include "sim/platform/service/MessageGate.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/platform/service/WireFormat.h"
#include "sim/platform/testing/RawFrames.h"

namespace halvo::sim {
namespace {

constexpr std::uint32_t kLargestBody = kMaxMessageBytes - kFrameHeaderBytes;

class MessageGateTest : public testing::Test {
 protected:
  MessageGateTest() {
    int ends[2] = {-1, -1};
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    ours = UniqueDescriptor(ends[0]);
    theirs = UniqueDescriptor(ends[1]);
  }

  NextMessage lookAfter(const std::string& bytes) {
    EXPECT_EQ(::send(theirs.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
    return lookAtNextMessage(ours.get());
  }

  UniqueDescriptor ours;
  UniqueDescriptor theirs;
};

TEST_F(MessageGateTest, NothingHasArrived) { EXPECT_EQ(lookAtNextMessage(ours.get()), NextMessage::none); }

TEST_F(MessageGateTest, HeaderCutShortIsIncomplete) {
  EXPECT_EQ(lookAfter(frameHeader({.body = 0}).substr(0, 15)), NextMessage::incomplete);
}

TEST_F(MessageGateTest, LargestMessageIsAcceptable) {
  EXPECT_EQ(lookAfter(frameHeader({.body = kLargestBody})), NextMessage::acceptable);
}

TEST_F(MessageGateTest, OneByteMoreIsTooLarge) {
  EXPECT_EQ(lookAfter(frameHeader({.body = kLargestBody + 1})), NextMessage::tooLarge);
}

TEST_F(MessageGateTest, HeaderFieldsCountWithTheirPadding) {
  EXPECT_EQ(lookAfter(frameHeader({.body = kLargestBody - 16, .fields = 9})), NextMessage::acceptable);
}

TEST_F(MessageGateTest, PaddingCanMakeAMessageTooLarge) {
  EXPECT_EQ(lookAfter(frameHeader({.body = kLargestBody - 15, .fields = 9})), NextMessage::tooLarge);
}

TEST_F(MessageGateTest, BigEndianHeaderIsReadAsSuch) {
  EXPECT_EQ(lookAfter(frameHeader({.body = kLargestBody + 1, .bigEndian = true})), NextMessage::tooLarge);
}

TEST_F(MessageGateTest, SmallBigEndianMessageIsAcceptable) {
  EXPECT_EQ(lookAfter(frameHeader({.body = 1, .bigEndian = true})), NextMessage::acceptable);
}

TEST_F(MessageGateTest, LengthsThatOverflowTogetherAreTooLarge) {
  EXPECT_EQ(lookAfter(frameHeader({.body = 0xFFFFFFFF, .fields = 0xFFFFFFFF})), NextMessage::tooLarge);
}

TEST_F(MessageGateTest, LookingTakesNothingAway) {
  EXPECT_EQ(lookAfter(frameHeader({.body = 0})), NextMessage::acceptable);
  EXPECT_EQ(lookAtNextMessage(ours.get()), NextMessage::acceptable);
}

TEST_F(MessageGateTest, ClientThatHasGoneIsTheEnd) {
  theirs.close();

  EXPECT_EQ(lookAtNextMessage(ours.get()), NextMessage::ended);
}

}  // namespace
}  // namespace halvo::sim
