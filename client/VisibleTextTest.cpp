#include "client/VisibleText.h"

#include <gtest/gtest.h>

namespace halvo {
namespace {

TEST(VisibleTextTest, OrdinaryTextStays) {
  EXPECT_EQ(visibleText("2.1 \"beta\" é \U0001F3A7"), "2.1 \"beta\" é \U0001F3A7");
}

TEST(VisibleTextTest, ControlCharactersBecomeOctalCodes) {
  EXPECT_EQ(visibleText(std::string_view("\x1B[2J\n\0\x7F", 7)), "\\033[2J\\012\\000\\177");
}

}  // namespace
}  // namespace halvo
