#import "transport/mac/ExportedHandler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#import "platform/mac/FoundationText.h"
#import "platform/mac/testing/CodeUnitString.h"
#include "transport/mac/testing/RecordingHandler.h"

namespace halvo {
namespace {

using testing::ElementsAre;

class ExportedHandlerTest : public testing::Test {
 protected:
  const std::shared_ptr<RecordingHandler> handler_ = std::make_shared<RecordingHandler>();
  HalvoExportedHandler* const exported_ = [[HalvoExportedHandler alloc] initWithHandler:handler_];
  std::vector<std::string> replies_;

  void (^textReply())(NSString*) {
    return ^(NSString* json) {
      this->replies_.push_back(textFromFoundation(json));
    };
  }
  void (^boolReply())(bool) {
    return ^(bool succeeded) {
      this->replies_.emplace_back(succeeded ? "true" : "false");
    };
  }
};

NSData* blob(const char* text) { return [NSData dataWithBytes:text length:strlen(text)]; }

// What a client can send although the declaration forbids it. A variable hides it from the compiler.
id nothing() { return nil; }

TEST_F(ExportedHandlerTest, PingReachesTheHandlerAndItsAnswerTheClient) {
  handler_->textAnswer = R"({"ok":true})";

  [exported_ pingWithReply:textReply()];

  EXPECT_THAT(handler_->calls, ElementsAre("ping"));
  EXPECT_THAT(replies_, ElementsAre(R"({"ok":true})"));
}

TEST_F(ExportedHandlerTest, EnumerateReachesTheHandlerAndItsAnswerTheClient) {
  [exported_ enumerateActiveGuiDomainsWithReply:textReply()];

  EXPECT_THAT(handler_->calls, ElementsAre("enumerateActiveGuiDomains"));
  EXPECT_THAT(replies_, ElementsAre("{}"));
}

TEST_F(ExportedHandlerTest, FirstGenerationPrepareForRemovalPassesItsFlag) {
  [exported_ prepareForRemovalWithAcceptAudioInterruption:true withReply:textReply()];
  [exported_ prepareForRemovalWithAcceptAudioInterruption:false withReply:textReply()];

  EXPECT_THAT(handler_->calls, ElementsAre("prepareForRemoval accept=1", "prepareForRemoval accept=0"));
  EXPECT_THAT(replies_, ElementsAre("{}", "{}"));
}

TEST_F(ExportedHandlerTest, FirstGenerationRemoveAppBundlePassesItsPath) {
  [exported_ removeAppBundleWithPath:@"/a" withReply:boolReply()];

  EXPECT_THAT(handler_->calls, ElementsAre("removeAppBundle path=/a"));
  EXPECT_THAT(replies_, ElementsAre("true"));
}

TEST_F(ExportedHandlerTest, FirstGenerationFinalizeRemovalHasNoReply) {
  [exported_ finalizeRemoval];

  EXPECT_THAT(handler_->calls, ElementsAre("finalizeRemoval"));
}

TEST_F(ExportedHandlerTest, FirstGenerationInstallPassesItsArgumentsInOrder) {
  [exported_ installSystemPkgWithPkgPath:@"/p.pkg"
                            manifestJSON:@"{}"
                 acceptAudioInterruption:true
                               withReply:textReply()];

  EXPECT_THAT(handler_->calls, ElementsAre("installSystemPkg pkgPath=/p.pkg manifest={} accept=1"));
  EXPECT_THAT(replies_, ElementsAre("{}"));
}

TEST_F(ExportedHandlerTest, PrepareForRemovalPassesItsAuthorizationAndFlag) {
  [exported_ prepareForRemovalWithAuthorization:blob("form") acceptAudioInterruption:true withReply:textReply()];

  EXPECT_THAT(handler_->calls, ElementsAre("prepareForRemoval authorization=form accept=1"));
  EXPECT_THAT(replies_, ElementsAre("{}"));
}

TEST_F(ExportedHandlerTest, RemoveAppBundlePassesItsAuthorizationAndPath) {
  handler_->boolAnswer = false;

  [exported_ removeAppBundleWithAuthorization:blob("form") path:@"/a" withReply:boolReply()];

  EXPECT_THAT(handler_->calls, ElementsAre("removeAppBundle authorization=form path=/a"));
  EXPECT_THAT(replies_, ElementsAre("false"));
}

TEST_F(ExportedHandlerTest, FinalizeRemovalPassesItsAuthorization) {
  [exported_ finalizeRemovalWithAuthorization:blob("form") withReply:boolReply()];

  EXPECT_THAT(handler_->calls, ElementsAre("finalizeRemoval authorization=form"));
  EXPECT_THAT(replies_, ElementsAre("true"));
}

TEST_F(ExportedHandlerTest, InstallPassesItsArgumentsInOrder) {
  [exported_ installSystemPkgWithAuthorization:blob("form")
                                       pkgPath:@"/p.pkg"
                                  manifestJSON:@"{}"
                       acceptAudioInterruption:false
                                     withReply:textReply()];

  EXPECT_THAT(handler_->calls, ElementsAre("installSystemPkg authorization=form pkgPath=/p.pkg manifest={} accept=0"));
  EXPECT_THAT(replies_, ElementsAre("{}"));
}

TEST_F(ExportedHandlerTest, NilArgumentsAreTheEmptyValues) {
  [exported_ removeAppBundleWithPath:nothing() withReply:boolReply()];
  [exported_ installSystemPkgWithPkgPath:nothing()
                            manifestJSON:nothing()
                 acceptAudioInterruption:false
                               withReply:textReply()];
  [exported_ prepareForRemovalWithAuthorization:nothing() acceptAudioInterruption:false withReply:textReply()];
  [exported_ removeAppBundleWithAuthorization:nothing() path:nothing() withReply:boolReply()];
  [exported_ finalizeRemovalWithAuthorization:nothing() withReply:boolReply()];
  [exported_ installSystemPkgWithAuthorization:nothing()
                                       pkgPath:nothing()
                                  manifestJSON:nothing()
                       acceptAudioInterruption:false
                                     withReply:textReply()];

  EXPECT_THAT(handler_->calls, ElementsAre("removeAppBundle path=", "installSystemPkg pkgPath= manifest= accept=0",
                                           "prepareForRemoval authorization= accept=0",
                                           "removeAppBundle authorization= path=", "finalizeRemoval authorization=",
                                           "installSystemPkg authorization= pkgPath= manifest= accept=0"));
  EXPECT_EQ(replies_.size(), 6U);
}

TEST_F(ExportedHandlerTest, ArgumentsOfOtherClassesAreTheEmptyValues) {
  const id number = @7;

  [exported_ removeAppBundleWithAuthorization:number path:number withReply:boolReply()];
  [exported_ installSystemPkgWithAuthorization:static_cast<id>(@"text")
                                       pkgPath:static_cast<id>([NSNull null])
                                  manifestJSON:static_cast<id>(@[])
                       acceptAudioInterruption:true
                                     withReply:textReply()];

  EXPECT_THAT(handler_->calls, ElementsAre("removeAppBundle authorization= path=",
                                           "installSystemPkg authorization= pkgPath= manifest= accept=1"));
}

TEST_F(ExportedHandlerTest, WithoutReplyBlockTheRequestIsHandledAndTheAnswerDropped) {
  [exported_ pingWithReply:nothing()];
  [exported_ enumerateActiveGuiDomainsWithReply:nothing()];
  [exported_ prepareForRemovalWithAcceptAudioInterruption:true withReply:nothing()];
  [exported_ removeAppBundleWithPath:@"/a" withReply:nothing()];
  [exported_ installSystemPkgWithPkgPath:@"" manifestJSON:@"" acceptAudioInterruption:true withReply:nothing()];
  [exported_ prepareForRemovalWithAuthorization:blob("") acceptAudioInterruption:true withReply:nothing()];
  [exported_ removeAppBundleWithAuthorization:blob("") path:@"" withReply:nothing()];
  [exported_ finalizeRemovalWithAuthorization:blob("") withReply:nothing()];
  [exported_ installSystemPkgWithAuthorization:blob("")
                                       pkgPath:@""
                                  manifestJSON:@""
                       acceptAudioInterruption:true
                                     withReply:nothing()];

  EXPECT_EQ(handler_->calls.size(), 9U);
}

TEST_F(ExportedHandlerTest, TextWithNulEmojiAndAMebibytePassesBothWaysUnchanged) {
  const std::string text = std::string("\0\xF0\x9F\x8E\xA7\"\n", 7) + std::string(1 << 20, 'x');
  handler_->textAnswer = text;

  [exported_ installSystemPkgWithPkgPath:@"/p"
                            manifestJSON:foundationText(text)
                 acceptAudioInterruption:false
                               withReply:textReply()];

  EXPECT_EQ(handler_->calls.front(), "installSystemPkg pkgPath=/p manifest=" + text + " accept=0");
  EXPECT_EQ(replies_.front(), text);
}

TEST_F(ExportedHandlerTest, AMalformedPathReachesTheHandlerWithReplacementCharacters) {
  NSString* const malformed = [[HalvoCodeUnitString alloc] initWithUnits:{'/', 0xDC00}];

  [exported_ removeAppBundleWithPath:malformed withReply:boolReply()];

  EXPECT_THAT(handler_->calls, ElementsAre("removeAppBundle path=/\xEF\xBF\xBD"));
}

TEST_F(ExportedHandlerTest, AReplyMayComeLaterAndFromAnotherThread) {
  handler_->keepsTextReplies = true;
  handler_->keepsBoolReplies = true;
  [exported_ pingWithReply:textReply()];
  [exported_ removeAppBundleWithPath:@"/a" withReply:boolReply()];
  ASSERT_TRUE(replies_.empty());

  std::thread([&] {
    @autoreleasepool {
      handler_->textReplies.front()("late");
      handler_->boolReplies.front()(true);
    }
  }).join();

  EXPECT_THAT(replies_, ElementsAre("late", "true"));
}

TEST_F(ExportedHandlerTest, OnlyTheFirstOfTwoRepliesGetsThrough) {
  handler_->keepsTextReplies = true;
  handler_->keepsBoolReplies = true;
  [exported_ pingWithReply:textReply()];
  [exported_ removeAppBundleWithPath:@"/a" withReply:boolReply()];

  handler_->textReplies.front()("first");
  handler_->textReplies.front()("second");
  handler_->boolReplies.front()(true);
  handler_->boolReplies.front()(false);

  EXPECT_THAT(replies_, ElementsAre("first", "true"));
}

TEST_F(ExportedHandlerTest, AReplyThatIsNeverGivenLetsGoOfTheBlock) {
  handler_->keepsTextReplies = true;
  const auto alive = std::make_shared<int>(0);
  @autoreleasepool {
    [exported_ pingWithReply:^(NSString*) {
      static_cast<void>(alive);
    }];
  }
  ASSERT_GT(alive.use_count(), 1);

  handler_->textReplies.clear();

  EXPECT_EQ(alive.use_count(), 1);
}

TEST(ExportedHandlerOwnershipTest, TheHandlerDiesWithTheExportedObject) {
  std::weak_ptr<RecordingHandler> handler;
  @autoreleasepool {
    auto owned = std::make_shared<RecordingHandler>();
    handler = owned;
    HalvoExportedHandler* const exported = [[HalvoExportedHandler alloc] initWithHandler:std::move(owned)];
    [exported finalizeRemoval];
    ASSERT_FALSE(handler.expired());
  }

  EXPECT_TRUE(handler.expired());
}

}  // namespace
}  // namespace halvo
