#include "client/doctor/JSONText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/JSONObject.h"

namespace halvo {
namespace {

struct TextRow {
  const char* name;
  std::string text;
  std::string written;
  std::string readBack;
};

class JSONString : public testing::TestWithParam<TextRow> {};

TEST_P(JSONString, IsWrittenAs) { EXPECT_EQ(jsonString(GetParam().text), GetParam().written); }

TEST_P(JSONString, IsReadBackAs) {
  const auto object = halvoReadJSONObject(jsonObject({{"text", jsonString(GetParam().text)}}));

  EXPECT_THAT(object, testing::Optional(testing::ElementsAre(
                          testing::Pair("text", testing::VariantWith<std::string>(GetParam().readBack)))));
}

INSTANTIATE_TEST_SUITE_P(
    Table, JSONString,
    testing::Values(TextRow{"Empty", "", "\"\"", ""}, TextRow{"Plain", "1.2.0", "\"1.2.0\"", "1.2.0"},
                    TextRow{"QuoteAndBackslash", "a\"b\\c", R"("a\"b\\c")", "a\"b\\c"},
                    TextRow{"LineFeedAndEscape", "a\n\x1B[2J", R"("a\u000a\u001b[2J")", "a\n\x1B[2J"},
                    TextRow{"FirstControl", std::string("\0", 1), R"("\u0000")", std::string("\0", 1)},
                    TextRow{"ControlsOfBothDigits", "\x09\x0F\x10\x1F", R"("\u0009\u000f\u0010\u001f")",
                            "\x09\x0F\x10\x1F"},
                    TextRow{"AllDigits", "\x01\x02\x03\x04\x05\x06\x07\x08\x0B\x0C\x0D\x0E",
                            R"("\u0001\u0002\u0003\u0004\u0005\u0006\u0007\u0008\u000b\u000c\u000d\u000e")",
                            "\x01\x02\x03\x04\x05\x06\x07\x08\x0B\x0C\x0D\x0E"},
                    TextRow{"BlankAndNeighbours", " !#[]", "\" !#[]\"", " !#[]"},
                    TextRow{"IllFormedAtBothEnds", "\xFFz\xC3", "\"\uFFFDz\uFFFD\"", "\uFFFDz\uFFFD"},
                    TextRow{"CutCharacter", "\xE2\x82", "\"\uFFFD\uFFFD\"", "\uFFFD\uFFFD"},
                    TextRow{"Delete", "\x7F", "\"\x7F\"", "\x7F"}, TextRow{"Umlaut", "\u00E4", "\"\u00E4\"", "\u00E4"},
                    TextRow{"IllFormed", "a\xFF\xC3z", "\"a\uFFFD\uFFFDz\"", "a\uFFFD\uFFFDz"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(JSONTextTest, ValuesArePutTogether) {
  EXPECT_EQ(jsonObject({{"list", jsonArray({jsonNumber(-1), jsonBoolean(true), kJSONNull})}, {"none", jsonArray({})}}),
            R"({"list":[-1,true,null],"none":[]})");
  EXPECT_EQ(jsonObject({}), "{}");
  EXPECT_EQ(jsonBoolean(false), "false");
}

}  // namespace
}  // namespace halvo
