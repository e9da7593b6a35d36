#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <chrono>

#include "platform/contract/Answers.h"
#include "platform/service/ServiceClient.h"
#include "sim/platform/service/WireFormat.h"
#include "sim/platform/testing/ListeningHelper.h"
#include "sim/platform/testing/RawFrames.h"

namespace halvo::sim {
namespace {

using std::chrono::milliseconds;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

// What an honest client is answered, meanwhile or afterwards.
std::string pingOfAnother() {
  Answers answers;
  const auto client = ServiceClient::forMachService("com.halvo.helper");
  client->proxy(answers.failure())->ping(answers.text());
  return answers.next();
}

class HostileClientTest : public testing::Test {
 protected:
  // A connection that has authenticated.
  UniqueDescriptor authenticated() const {
    UniqueDescriptor socket = connectRaw(helper.socket());
    sendRaw(socket, authentication());
    EXPECT_THAT(receiveSome(socket), StartsWith("OK "));
    return socket;
  }

  ListeningHelper helper;
};

// A ping as the library would write it: header fields 1 (path), 2 (interface), 3 (member), each padded to 8 bytes.
std::string properPing() {
  const auto field = [](char code, char type, const std::string& text) {
    std::string bytes{code, 1, type, 0};
    bytes += static_cast<char>(text.size());
    bytes += std::string(3, '\0') + text + '\0';
    return bytes;
  };
  const auto padded = [](std::string bytes) { return bytes + std::string((8 - bytes.size() % 8) % 8, '\0'); };
  const std::string fields =
      padded(field(1, 'o', kHelperObject)) + padded(field(2, 's', kHelperInterface)) + field(3, 's', "pingWithReply_");
  return frameHeader({.fields = static_cast<std::uint32_t>(fields.size())}) + padded(fields);
}

struct BytesRow {
  const char* name;
  std::string bytes;
};

class HostileBytes : public HostileClientTest, public testing::WithParamInterface<BytesRow> {};

TEST_P(HostileBytes, CloseTheirConnectionAndNoOther) {
  const UniqueDescriptor socket = authenticated();
  sendRaw(socket, GetParam().bytes);

  EXPECT_TRUE(receiveUntilClosed(socket).closed);
  EXPECT_EQ(pingOfAnother(), "text ping");
}

constexpr auto kTooLong = static_cast<std::uint32_t>(kMaxMessageBytes);

INSTANTIATE_TEST_SUITE_P(
    Table, HostileBytes,
    testing::Values(BytesRow{"Garbage", std::string(64, '\xFF')}, BytesRow{"Zeros", std::string(64, '\0')},
                    BytesRow{"UnknownByteOrder", "x" + frameHeader({}).substr(1)},
                    BytesRow{"HeaderFieldsThatAreNone", frameHeader({.fields = 32}) + std::string(32, '\xEE')},
                    BytesRow{"MissingHeaderFields", frameHeader({.body = 8}) + std::string(8, '\0')},
                    BytesRow{"OversizedBody", frameHeader({.body = kTooLong})},
                    BytesRow{"OversizedFields", frameHeader({.fields = kTooLong})},
                    BytesRow{"OversizedBigEndian", frameHeader({.body = kTooLong, .bigEndian = true})},
                    BytesRow{"LargestLengths", frameHeader({.body = 0xFFFFFFFF, .fields = 0xFFFFFFFF})}),
    [](const testing::TestParamInfo<BytesRow>& row) { return row.param.name; });

TEST_F(HostileClientTest, OversizedMessageSentTogetherWithTheAuthenticationIsRefusedToo) {
  const UniqueDescriptor socket = connectRaw(helper.socket());
  sendRaw(socket, authentication() + frameHeader({.body = kTooLong}));

  EXPECT_TRUE(receiveUntilClosed(socket).closed);
}

TEST_F(HostileClientTest, OversizedMessageBehindAProperOneIsRefusedToo) {
  const UniqueDescriptor socket = authenticated();
  sendRaw(socket, properPing() + frameHeader({.body = kTooLong}));

  const Received received = receiveUntilClosed(socket);

  EXPECT_TRUE(received.closed);
  EXPECT_THAT(received.bytes, HasSubstr("ping"));
}

TEST_F(HostileClientTest, MessageThatComesByteByByteIsServed) {
  const UniqueDescriptor socket = authenticated();
  for (const char byte : properPing()) sendRaw(socket, std::string(1, byte));

  EXPECT_THAT(receiveSome(socket), HasSubstr("ping"));
}

TEST_F(HostileClientTest, GarbageInsteadOfAuthenticationCloses) {
  const UniqueDescriptor socket = connectRaw(helper.socket());
  sendRaw(socket, std::string(4096, 'x') + "\r\n");

  EXPECT_TRUE(receiveUntilClosed(socket).closed);
  EXPECT_EQ(pingOfAnother(), "text ping");
}

TEST_F(HostileClientTest, AuthenticationWithoutEndCloses) {
  const UniqueDescriptor socket = connectRaw(helper.socket());
  sendRaw(socket, std::string(1, '\0') + std::string(200'000, 'A'));

  EXPECT_TRUE(receiveUntilClosed(socket).closed);
}

TEST_F(HostileClientTest, ClientThatLeavesInTheMiddleOfAMessageDisturbsNobody) {
  UniqueDescriptor socket = authenticated();
  sendRaw(socket, frameHeader({.body = 1000}) + "only a little");
  socket.close();

  EXPECT_EQ(pingOfAnother(), "text ping");
}

TEST_F(HostileClientTest, ClientThatDoesNotAuthenticateHoldsUpNobody) {
  const UniqueDescriptor silent = connectRaw(helper.socket());
  const UniqueDescriptor slow = connectRaw(helper.socket());
  sendRaw(slow, std::string("\0AUTH", 5));

  EXPECT_EQ(pingOfAnother(), "text ping");
}

TEST_F(HostileClientTest, RefusedClientIsClosedWithoutAWord) {
  helper.refuseEverybody();
  const UniqueDescriptor socket = connectRaw(helper.socket());
  sendRaw(socket, authentication());

  const Received received = receiveUntilClosed(socket);

  EXPECT_TRUE(received.closed);
  EXPECT_EQ(received.bytes, "");
  EXPECT_THAT(helper.handler().calls(), IsEmpty());
}

TEST_F(HostileClientTest, LargestMessageIsServedAndALargerOneIsNotSent) {
  Answers answers;
  const auto client = ServiceClient::forMachService("com.halvo.helper");
  const auto proxy = client->proxy(answers.failure());
  const std::string largest(kMaxMessageBytes - 1024, 'x');
  proxy->removeAppBundle(largest, answers.boolean());
  proxy->removeAppBundle(largest + "y", answers.boolean());
  proxy->ping(answers.text());

  EXPECT_EQ(answers.next(), "rejected");
  EXPECT_EQ(answers.next(), "true");
  EXPECT_EQ(answers.next(), "text ping");
}

TEST_F(HostileClientTest, TextWithANulIsNotSent) {
  Answers answers;
  const auto client = ServiceClient::forMachService("com.halvo.helper");
  client->proxy(answers.failure())->removeAppBundle(std::string("/a\0b", 4), answers.boolean());

  EXPECT_EQ(answers.next(), "rejected");
}

TEST(ImpatientHelperTest, ClientThatTakesTooLongToAuthenticateIsClosed) {
  const ListeningHelper helper({.connections = 64, .patience = milliseconds(50)});
  const UniqueDescriptor socket = connectRaw(helper.socket());
  sendRaw(socket, std::string("\0AUTH", 5));

  EXPECT_TRUE(receiveUntilClosed(socket).closed);
}

TEST(FullHelperTest, FurtherClientIsServedWhenAnotherHasLeft) {
  const ListeningHelper helper({.connections = 1});
  OwnedBus first = helper.thirdPartyClient();
  ASSERT_GE(
      sd_bus_call_method(first.get(), nullptr, kHelperObject, kHelperInterface, "pingWithReply_", nullptr, nullptr, ""),
      0);
  Answers answers;
  const auto client = ServiceClient::forMachService("com.halvo.helper");
  client->proxy(answers.failure())->ping(answers.text());
  const UniqueDescriptor third = connectRaw(helper.socket());
  const auto answeredMeanwhile = answers.rest();

  first.reset();

  EXPECT_THAT(answeredMeanwhile, IsEmpty());
  EXPECT_EQ(answers.next(), "text ping");
}

}  // namespace
}  // namespace halvo::sim
