#include "client/VisibleText.h"

#include <gtest/gtest.h>

namespace halvo {
namespace {

struct Row {
  const char* name;
  std::string_view text;
  const char* visible;
};

class VisibleText : public testing::TestWithParam<Row> {};

TEST_P(VisibleText, HoldsNoControlCharacter) { EXPECT_EQ(visibleText(GetParam().text), GetParam().visible); }

INSTANTIATE_TEST_SUITE_P(
    Table, VisibleText,
    testing::Values(Row{"OrdinaryText", "2.1 \"beta\" \\ é \U0001F3A7", "2.1 \"beta\" \\ é \U0001F3A7"},
                    Row{"Empty", "", ""}, Row{"ClearScreen", "\x1B[2J", "\\033[2J"}, Row{"LineFeed", "a\nb", "a\\012b"},
                    Row{"Nul", {"\0", 1}, "\\000"}, Row{"LastOfTheFirstBlock", "\x1F", "\\037"},
                    Row{"FirstPrintable", " ", " "}, Row{"LastPrintable", "~", "~"}, Row{"Delete", "\x7F", "\\177"},
                    Row{"FirstOfTheSecondBlock", "\u0080", "\\302\\200"},
                    Row{"OneCharacterOpeningASequence", "\u009B2J", "\\302\\2332J"},
                    Row{"LastOfTheSecondBlock", "\u009F", "\\302\\237"}, Row{"NoBreakSpace", "\u00A0", "\u00A0"},
                    Row{"SameSecondByte", "\u00DB", "\u00DB"}, Row{"LeadByteAtTheEnd", {"\xC2\x9B", 1}, "\xC2"},
                    Row{"LeadByteBeforeAnEscape", "\xC2\x1B[2J", "\xC2\\033[2J"},
                    Row{"LeadByteTwice", "\xC2\u0080", "\xC2\\302\\200"}, Row{"SecondByteAlone", "\x9B", "\x9B"},
                    Row{"LeadByteBeforeADelete", "\xC2\x7F", "\xC2\\177"}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace halvo
