#include "platform/mac/JSONNesting.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/contract/Repeated.h"

namespace halvo {
namespace {

TEST(JSONNestingTest, DepthOf512IsAllowed) {
  const std::string deep = std::string(512, '[') + std::string(512, ']');

  EXPECT_FALSE(jsonNestsTooDeep(deep));
}

TEST(JSONNestingTest, DepthOf513IsTooMuch) {
  const std::string deep = std::string(513, '[') + std::string(513, ']');

  EXPECT_TRUE(jsonNestsTooDeep(deep));
}

TEST(JSONNestingTest, ObjectsCountAsArraysDo) {
  std::string deep(256, '[');
  deep += std::string(257, '{');

  EXPECT_TRUE(jsonNestsTooDeep(deep));
}

TEST(JSONNestingTest, SiblingsDoNotAddUp) {
  const std::string wide = "[" + repeated("[],{},", 2000) + "0]";

  EXPECT_FALSE(jsonNestsTooDeep(wide));
}

TEST(JSONNestingTest, BracketsInsideAStringDoNotCount) {
  const std::string text = R"({"a":"\")" + std::string(600, '[') + R"("})";

  EXPECT_FALSE(jsonNestsTooDeep(text));
}

TEST(JSONNestingTest, AStringOfOneCharacterEndsAtItsQuotationMark) {
  const std::string text = R"({"a":)" + std::string(512, '[');

  EXPECT_TRUE(jsonNestsTooDeep(text));
}

TEST(JSONNestingTest, AnEscapedBackslashDoesNotHideTheEndOfAString) {
  const std::string text = R"({"a":"\\",)" + std::string(513, '[');

  EXPECT_TRUE(jsonNestsTooDeep(text));
}

}  // namespace
}  // namespace halvo
