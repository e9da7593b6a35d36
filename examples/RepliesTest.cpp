#include "examples/Replies.h"

#include <gtest/gtest.h>

namespace example {
namespace {

constexpr const char* kBroughtByAManifest =
    R"({"code":"downgrade","installed":"2","incoming":"1","code":"ok","installed":"9"})";

TEST(RepliesTest, TheFirstCodeCounts) { EXPECT_EQ(codeOf(kBroughtByAManifest), "downgrade"); }

TEST(RepliesTest, ACodeStandsAtTheVeryBeginning) {
  EXPECT_EQ(codeOf(R"({"incoming":"1","code":"ok"})"), "");
  EXPECT_EQ(codeOf("true"), "");
}

TEST(RepliesTest, AValueIsFoundUnderItsKey) {
  EXPECT_EQ(member(R"({"code":"ok","gui_app_path":"/Applications/Halvo.app"})", "gui_app_path"),
            "/Applications/Halvo.app");
}

TEST(RepliesTest, AKeyThatComesTwiceHasNoValue) {
  EXPECT_EQ(member(kBroughtByAManifest, "installed"), std::nullopt);
  EXPECT_EQ(member(kBroughtByAManifest, "incoming"), "1");
}

TEST(RepliesTest, AKeyThatIsMissingHasNoValue) { EXPECT_EQ(member(R"({"code":"ok"})", "log_path"), std::nullopt); }

}  // namespace
}  // namespace example
