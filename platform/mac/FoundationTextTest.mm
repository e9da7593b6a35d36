#include "platform/mac/FoundationText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#import "platform/mac/testing/CodeUnitString.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(FoundationTextTest, NilIsTheEmptyText) { EXPECT_EQ(textFromFoundation(nil), ""); }

TEST(FoundationTextTest, AnObjectOfAnotherClassIsTheEmptyText) {
  EXPECT_EQ(textFromFoundation(@42), "");
  EXPECT_EQ(textFromFoundation([NSNull null]), "");
  EXPECT_EQ(textFromFoundation(@[ @"a" ]), "");
  EXPECT_EQ(textFromFoundation([NSData data]), "");
}

TEST(FoundationTextTest, TextComesBackUnchanged) {
  const std::string text = "/Applications/H\xC3\xA4lvo \xF0\x9F\x8E\xA7\".app\n";

  EXPECT_EQ(textFromFoundation(foundationText(text)), text);
}

TEST(FoundationTextTest, AnEmbeddedNulIsKept) {
  const std::string text("a\0b", 3);

  EXPECT_EQ(textFromFoundation(foundationText(text)), text);
  EXPECT_EQ(foundationText(text).length, 3U);
}

TEST(FoundationTextTest, AMebibyteComesBackUnchanged) {
  const std::string text(1 << 20, 'x');

  EXPECT_EQ(textFromFoundation(foundationText(text)), text);
}

TEST(FoundationTextTest, EmptyTextIsAnObject) { EXPECT_TRUE([foundationText("") isEqualToString:@""]); }

TEST(FoundationTextTest, AByteOrderMarkIsKept) {
  NSString* const marked = [[HalvoCodeUnitString alloc] initWithUnits:{0xFEFF, 'x'}];

  EXPECT_EQ(textFromFoundation(marked), "\xEF\xBB\xBFx");
}

TEST(FoundationTextTest, AnUnpairedSurrogateBecomesTheReplacementCharacter) {
  NSString* const malformed = [[HalvoCodeUnitString alloc] initWithUnits:{'a', 0xD800, 'b'}];

  EXPECT_EQ(textFromFoundation(malformed), "a\xEF\xBF\xBD"
                                           "b");
}

TEST(FoundationTextTest, IllFormedUTF8BecomesReplacementCharacters) {
  EXPECT_EQ(textFromFoundation(foundationText("a\xFF"
                                              "b")),
            "a\xEF\xBF\xBD"
            "b");
}

TEST(FoundationBytesTest, NilIsNoBytes) { EXPECT_THAT(bytesFromFoundation(nil), IsEmpty()); }

TEST(FoundationBytesTest, AnObjectOfAnotherClassIsNoBytes) {
  EXPECT_THAT(bytesFromFoundation(@"text"), IsEmpty());
  EXPECT_THAT(bytesFromFoundation(@1), IsEmpty());
}

TEST(FoundationBytesTest, EmptyDataIsNoBytes) { EXPECT_THAT(bytesFromFoundation([NSData data]), IsEmpty()); }

TEST(FoundationBytesTest, EveryByteIsTaken) {
  const unsigned char bytes[] = {0, 0xFF, 7};
  NSData* const data = [NSData dataWithBytes:bytes length:sizeof(bytes)];

  EXPECT_THAT(bytesFromFoundation(data), ElementsAre(std::byte{0}, std::byte{0xFF}, std::byte{7}));
}

}  // namespace
}  // namespace halvo
