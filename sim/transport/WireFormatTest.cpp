#include "sim/transport/WireFormat.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace halvo::sim {
namespace {

using testing::TestParamInfo;
using testing::Values;

const WireMessage& wire(MessageId id) { return wireMessages()[static_cast<std::size_t>(id)]; }

TEST(WireFormatTest, MemberIsTheSelectorWithUnderscores) {
  EXPECT_EQ(wire(MessageId::ping).member, "pingWithReply_");
  EXPECT_EQ(wire(MessageId::finalizeRemovalUnauthorized).member, "finalizeRemoval");
  EXPECT_EQ(wire(MessageId::installSystemPkg).member,
            "installSystemPkgWithAuthorization_pkgPath_manifestJSON_acceptAudioInterruption_withReply_");
}

TEST(WireFormatTest, SignatureFollowsTheArguments) {
  EXPECT_EQ(wire(MessageId::ping).signature, "");
  EXPECT_EQ(wire(MessageId::installSystemPkg).signature, "ayssb");
  EXPECT_EQ(wire(MessageId::removeAppBundle).signature, "ays");
}

TEST(WireFormatTest, ResultFollowsTheReply) {
  EXPECT_EQ(wire(MessageId::ping).result, "s");
  EXPECT_EQ(wire(MessageId::finalizeRemoval).result, "b");
  EXPECT_EQ(wire(MessageId::finalizeRemovalUnauthorized).result, "");
}

TEST(WireFormatTest, ArgumentsAndReplyAreNamed) {
  EXPECT_EQ(wire(MessageId::removeAppBundle).argumentNames, std::string("authorization\0path\0reply\0", 25));
  EXPECT_EQ(wire(MessageId::finalizeRemovalUnauthorized).argumentNames, "");
}

struct TextRow {
  const char* name;
  std::string text;
  std::string sendable;
};

class SendableText : public testing::TestWithParam<TextRow> {};

TEST_P(SendableText, IsWellFormedWithoutNul) { EXPECT_EQ(sendableText(GetParam().text), GetParam().sendable); }

INSTANTIATE_TEST_SUITE_P(Table, SendableText,
                         Values(TextRow{"Empty", "", ""}, TextRow{"ASCII", "/a b", "/a b"},
                                TextRow{"EveryLength", "a\u00E9\u20AC\U0001F3A7", "a\u00E9\u20AC\U0001F3A7"},
                                TextRow{"Nul", std::string("a\0b", 3), "a\uFFFDb"},
                                TextRow{"LoneByte", "a\xFFz", "a\uFFFDz"},
                                TextRow{"Surrogate", "\xED\xA0\x80", "\uFFFD"}),
                         [](const TestParamInfo<TextRow>& row) { return row.param.name; });

}  // namespace
}  // namespace halvo::sim
