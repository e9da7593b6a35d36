#include <gtest/gtest.h>

#import "platform/mac/XPCIncomingConnection.h"
#include "sim/objc/tests/TokenValues.h"

namespace halvo::sim {
namespace {

NSXPCConnection* connectionWith(id tokenValue) {
  return [[NSXPCConnection alloc] initWithToken:tokenValue processIdentifier:4711];
}

audit_token_t tokenOf(NSXPCConnection* connection) { return XPCIncomingConnection(connection).auditTokenValue(); }

TEST(AuditTokenTest, EncodingIsThatOfAStructOfEightIntegers) { EXPECT_STREQ(@encode(audit_token_t), "{?=[8I]}"); }

TEST(AuditTokenTest, EveryByteOfTheTokenIsRead) {
  EXPECT_TRUE(sameToken(tokenOf(connectionWith(boxed(kSampleToken))), kSampleToken));
}

TEST(AuditTokenTest, TheKeyIsReadOnce) {
  NSXPCConnection* const connection = connectionWith(boxed(kSampleToken));

  tokenOf(connection);

  EXPECT_EQ(connection.tokenReads, 1);
}

struct OddValue {
  const char* name;
  id (*value)();
};

class OddToken : public testing::TestWithParam<OddValue> {};

TEST_P(OddToken, GivesTheZeroToken) {
  EXPECT_TRUE(sameToken(tokenOf(connectionWith(GetParam().value())), audit_token_t{}));
}

id none() { return nil; }
id text() { return @"{501, 501, 20, 501, 20, 4711, 100005, 42}"; }
id number() { return @4711; }
id data() { return [NSData dataWithBytes:&kSampleToken length:sizeof(kSampleToken)]; }
id range() { return [NSValue valueWithRange:NSMakeRange(1, 2)]; }
id oneByteShort() { return boxedBytes<31>(); }
id oneByteLong() { return boxedBytes<33>(); }
id rightSizeWrongType() { return boxedBytes<32>(); }
id null() { return [NSNull null]; }

INSTANTIATE_TEST_SUITE_P(Table, OddToken,
                         testing::Values(OddValue{"Nil", none}, OddValue{"Text", text}, OddValue{"Number", number},
                                         OddValue{"Data", data}, OddValue{"Null", null}, OddValue{"Range", range},
                                         OddValue{"OneByteShort", oneByteShort}, OddValue{"OneByteLong", oneByteLong},
                                         OddValue{"RightSizeWrongType", rightSizeWrongType}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(AuditTokenTest, WithoutTheKeyTheTokenIsZeroAndNothingThrows) {
  NSXPCConnection* const connection = connectionWith(boxed(kSampleToken));
  connection.withoutTokenKey = YES;

  EXPECT_TRUE(sameToken(tokenOf(connection), audit_token_t{}));
  EXPECT_EQ(connection.tokenReads, 0);
}

TEST(IncomingConnectionTest, TheProcessIdentifierIsTheConnections) {
  EXPECT_EQ(XPCIncomingConnection(connectionWith(nil)).processIdentifier(), 4711);
}

}  // namespace
}  // namespace halvo::sim
