#include "HalvoHelperXPC/MessageTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string_view>
#include <vector>

#include "HalvoHelperXPC/Constants.h"

namespace halvo {

bool operator==(const MessageArgument& a, const MessageArgument& b) { return a.name == b.name && a.kind == b.kind; }

namespace {

using enum ArgumentKind;

TEST(ConstantsTest, AreWhatTheApplicationWasBuiltWith) {
  EXPECT_EQ(kHalvoHelperMachService, "com.halvo.helper");
  EXPECT_EQ(kHalvoHelperXPCVersion, 6);
  EXPECT_EQ(kHalvoAdminRight, "com.halvo.helper.manage-system");
}

TEST(ConstantsTest, UnauthorizedReplyHoldsNoBlank) {
  EXPECT_EQ(kHalvoUnauthorizedReplyJSON, R"({"code":"unauthorized"})");
  EXPECT_EQ(kHalvoUnauthorizedReplyJSON.size(), 23u);
}

struct MessageRow {
  const char* name;
  std::size_t index;
  MessageId id;
  std::string_view selector;
  std::vector<MessageArgument> arguments;
  ReplyKind reply;
  std::string_view typeEncoding;
};

class Message : public testing::TestWithParam<MessageRow> {
 protected:
  const HalvoHelperMessage& row() const { return kHalvoHelperMessages.at(GetParam().index); }
};

TEST_P(Message, HasItsSelector) { EXPECT_EQ(row().selector, GetParam().selector); }

TEST_P(Message, HasItsArgumentsInOrder) {
  EXPECT_THAT(row().arguments(), testing::ElementsAreArray(GetParam().arguments));
}

TEST_P(Message, HasItsReply) { EXPECT_EQ(row().reply, GetParam().reply); }

TEST_P(Message, HasItsTypeEncoding) { EXPECT_EQ(row().typeEncoding, GetParam().typeEncoding); }

TEST_P(Message, IsFoundByItsIdentifier) {
  EXPECT_EQ(row().id, GetParam().id);
  EXPECT_EQ(&halvoMessage(GetParam().id), &row());
}

INSTANTIATE_TEST_SUITE_P(
    Table, Message,
    testing::Values(
        MessageRow{"Ping", 0, MessageId::ping, "pingWithReply:", {}, ReplyKind::text, "v24@0:8@?<v@?@\"NSString\">16"},
        MessageRow{"EnumerateActiveGuiDomains",
                   1,
                   MessageId::enumerateActiveGuiDomains,
                   "enumerateActiveGuiDomainsWithReply:",
                   {},
                   ReplyKind::text,
                   "v24@0:8@?<v@?@\"NSString\">16"},
        MessageRow{"PrepareForRemovalUnauthorized",
                   2,
                   MessageId::prepareForRemovalUnauthorized,
                   "prepareForRemovalWithAcceptAudioInterruption:withReply:",
                   {{"acceptAudioInterruption", boolean}},
                   ReplyKind::text,
                   "v28@0:8B16@?<v@?@\"NSString\">20"},
        MessageRow{"RemoveAppBundleUnauthorized",
                   3,
                   MessageId::removeAppBundleUnauthorized,
                   "removeAppBundleWithPath:withReply:",
                   {{"path", text}},
                   ReplyKind::boolean,
                   "v32@0:8@\"NSString\"16@?<v@?B>24"},
        MessageRow{"FinalizeRemovalUnauthorized",
                   4,
                   MessageId::finalizeRemovalUnauthorized,
                   "finalizeRemoval",
                   {},
                   ReplyKind::none,
                   "v16@0:8"},
        MessageRow{"InstallSystemPkgUnauthorized",
                   5,
                   MessageId::installSystemPkgUnauthorized,
                   "installSystemPkgWithPkgPath:manifestJSON:acceptAudioInterruption:withReply:",
                   {{"pkgPath", text}, {"manifestJSON", text}, {"acceptAudioInterruption", boolean}},
                   ReplyKind::text,
                   "v44@0:8@\"NSString\"16@\"NSString\"24B32@?<v@?@\"NSString\">36"},
        MessageRow{"PrepareForRemoval",
                   6,
                   MessageId::prepareForRemoval,
                   "prepareForRemovalWithAuthorization:acceptAudioInterruption:withReply:",
                   {{"authorization", data}, {"acceptAudioInterruption", boolean}},
                   ReplyKind::text,
                   "v36@0:8@\"NSData\"16B24@?<v@?@\"NSString\">28"},
        MessageRow{"RemoveAppBundle",
                   7,
                   MessageId::removeAppBundle,
                   "removeAppBundleWithAuthorization:path:withReply:",
                   {{"authorization", data}, {"path", text}},
                   ReplyKind::boolean,
                   "v40@0:8@\"NSData\"16@\"NSString\"24@?<v@?B>32"},
        MessageRow{"FinalizeRemoval",
                   8,
                   MessageId::finalizeRemoval,
                   "finalizeRemovalWithAuthorization:withReply:",
                   {{"authorization", data}},
                   ReplyKind::boolean,
                   "v32@0:8@\"NSData\"16@?<v@?B>24"},
        MessageRow{
            "InstallSystemPkg",
            9,
            MessageId::installSystemPkg,
            "installSystemPkgWithAuthorization:pkgPath:manifestJSON:acceptAudioInterruption:withReply:",
            {{"authorization", data}, {"pkgPath", text}, {"manifestJSON", text}, {"acceptAudioInterruption", boolean}},
            ReplyKind::text,
            "v52@0:8@\"NSData\"16@\"NSString\"24@\"NSString\"32B40@?<v@?@\"NSString\">44"}),
    [](const auto& row) { return row.param.name; });

TEST(MessageTableTest, HoldsTenMessages) { EXPECT_EQ(kHalvoHelperMessages.size(), 10u); }

}  // namespace
}  // namespace halvo
