#include "platform/mac/JSONExactNumbers.h"

#include <gtest/gtest.h>

namespace halvo {
namespace {

using testing::TestParamInfo;
using testing::Values;

struct TextRow {
  const char* name;
  std::string given;
  std::string made;
};

class ExactNumbers : public testing::TestWithParam<TextRow> {};

TEST_P(ExactNumbers, ReachTheReaderAs) { EXPECT_EQ(withExactNumbers(GetParam().given), GetParam().made); }

INSTANTIATE_TEST_SUITE_P(
    Table, ExactNumbers,
    Values(TextRow{"Empty", "", ""}, TextRow{"Integers", R"({"a":6,"b":[-7,0]})", R"({"a":6,"b":[-7,0]})"},
           TextRow{"WholeDecimal", "[6.0]", "[6]"},
           TextRow{"WholeDecimalThatADoubleRounds", "[9007199254740993.0]", "[9007199254740993]"},
           TextRow{"FractionThatADoubleDrops", "[6.00000000000000000001]", "[0.5]"},
           TextRow{"FractionThatADoubleTakesForZero", "[1e-400]", "[0.5]"},
           TextRow{"OneTooSmall", "[-9223372036854775809]", "[0.5]"}, TextRow{"LargestDouble", "[1e308]", "[0.5]"},
           TextRow{"BeyondDouble", "[1e400,-1e400]", "[1e400,-1e400]"},
           TextRow{"NoNumbers", "[01,1.,+1,-,1e]", "[01,1.,+1,-,1e]"}, TextRow{"NumberAtTheEnd", "6.0", "6"},
           TextRow{"DigitsInATextAreNoNumber", R"(["6.0",6.0])", R"(["6.0",6])"},
           TextRow{"DigitsFarInsideATextAreNoNumber", R"(["66.0 v12.50",6.0])", R"(["66.0 v12.50",6])"},
           TextRow{"NumberRightBehindAText", R"("a"6.0)", R"("a"6)"},
           TextRow{"EscapedQuotationMarkInAText", R"(["\"6.0",6.0])", R"(["\"6.0",6])"},
           TextRow{"BackslashAtTheEndOfAText", R"(["\\",6.0])", R"(["\\",6])"},
           TextRow{"TextThatNeverEnds", R"(["6.0)", R"(["6.0)"},
           TextRow{"TextThatEndsInABackslash", "[\"6.0\\", "[\"6.0\\"}),
    [](const TestParamInfo<TextRow>& row) { return row.param.name; });

}  // namespace
}  // namespace halvo
