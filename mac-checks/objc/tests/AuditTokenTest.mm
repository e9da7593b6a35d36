#include <gtest/gtest.h>

#include "mac-checks/objc/tests/TokenValues.h"
#import "transport/mac/XPCIncomingConnection.h"

// A value object whose type cannot be read, holding the bytes of a token.
@interface HalvoOddlyTypedValue : NSValue
@end

@implementation HalvoOddlyTypedValue

- (const char*)objCType {
  return "{audit_token_t=[8";
}

- (void)getValue:(void*)value {
  std::memcpy(value, &halvo::sim::kSampleToken, sizeof(audit_token_t));
}

@end

namespace halvo::sim {
namespace {

NSXPCConnection* connectionWith(id tokenValue) {
  return [[NSXPCConnection alloc] initWithToken:tokenValue processIdentifier:4711];
}

audit_token_t tokenOf(NSXPCConnection* connection) { return XPCIncomingConnection(connection).auditTokenValue(); }

TEST(AuditTokenTest, EncodingIsThatOfAStructOfEightIntegers) { EXPECT_STREQ(@encode(audit_token_t), "{?=[8I]}"); }

struct Encoding {
  const char* name;
  const char* text;
};

class TokenEncoding : public testing::TestWithParam<Encoding> {};

TEST_P(TokenEncoding, EveryByteOfTheTokenIsRead) {
  NSValue* const value = [NSValue valueWithBytes:&kSampleToken objCType:GetParam().text];

  EXPECT_TRUE(sameToken(tokenOf(connectionWith(value)), kSampleToken));
}

INSTANTIATE_TEST_SUITE_P(Table, TokenEncoding,
                         testing::Values(Encoding{"UnnamedStruct", "{?=[8I]}"},
                                         Encoding{"NamedStruct", "{audit_token_t=[8I]}"},
                                         Encoding{"StructWithNamedMember", "{?=\"val\"[8I]}"},
                                         Encoding{"SignedMembers", "{audit_token=[8i]}"},
                                         Encoding{"EightMembers", "{audit_token=IIIIIIII}"},
                                         Encoding{"Bytes", "{?=[32C]}"}, Encoding{"PlainArray", "[8I]"}),
                         [](const auto& info) { return std::string(info.param.name); });

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
id pointer() { return [NSValue valueWithPointer:&kSampleToken]; }
id decimal() { return [NSDecimalNumber decimalNumberWithString:@"4711"]; }
id unreadableType() { return [[HalvoOddlyTypedValue alloc] init]; }
id null() { return [NSNull null]; }

INSTANTIATE_TEST_SUITE_P(Table, OddToken,
                         testing::Values(OddValue{"Nil", none}, OddValue{"Text", text}, OddValue{"Number", number},
                                         OddValue{"Data", data}, OddValue{"Null", null}, OddValue{"Range", range},
                                         OddValue{"OneByteShort", oneByteShort}, OddValue{"OneByteLong", oneByteLong},
                                         OddValue{"Pointer", pointer}, OddValue{"Decimal", decimal},
                                         OddValue{"UnreadableType", unreadableType}),
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
