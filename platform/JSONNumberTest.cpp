#include "platform/JSONNumber.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "platform/contract/Repeated.h"

namespace halvo {
namespace {

using testing::TestParamInfo;
using testing::Values;

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();

struct WholeRow {
  const char* name;
  std::string text;
  std::int64_t value;
};

class WholeNumber : public testing::TestWithParam<WholeRow> {};

TEST_P(WholeNumber, IsItsInteger) { EXPECT_EQ(wholeJSONNumber(GetParam().text), GetParam().value); }

TEST_P(WholeNumber, IsInTheGrammar) { EXPECT_TRUE(isJSONNumber(GetParam().text)); }

INSTANTIATE_TEST_SUITE_P(
    Table, WholeNumber,
    Values(WholeRow{"Integer", "6", 6}, WholeRow{"Zero", "0", 0}, WholeRow{"MinusZero", "-0.0", 0},
           WholeRow{"Negative", "-70", -70}, WholeRow{"Decimal", "6.0", 6},
           WholeRow{"DecimalWithExponent", "1.25e2", 125}, WholeRow{"CapitalExponentWithPlus", "6E+1", 60},
           WholeRow{"NegativeExponent", "600e-2", 6}, WholeRow{"ExponentWithLeadingZeros", "6e001", 60},
           WholeRow{"SmallFractionMadeWhole", "0.006e3", 6}, WholeRow{"Largest", "9223372036854775807", kLargest},
           WholeRow{"LargestAsDecimal", "9223372036854775807.000", kLargest},
           WholeRow{"LargestByExponent", "0.9223372036854775807e19", kLargest},
           WholeRow{"Smallest", "-9223372036854775808", kSmallest},
           WholeRow{"SmallestAsDecimal", "-922337203685477580.80e1", kSmallest},
           WholeRow{"MostZeros", "1e18", 1'000'000'000'000'000'000},
           WholeRow{"ZeroWithAHugeExponent", "0e9999999999999999999", 0},
           WholeRow{"ManyZerosTakenBack", "1" + repeated("0", 1000) + "e-1000", 1}),
    [](const TestParamInfo<WholeRow>& row) { return row.param.name; });

struct NoWholeRow {
  const char* name;
  std::string text;
};

class NoWholeNumber : public testing::TestWithParam<NoWholeRow> {};

TEST_P(NoWholeNumber, GivesNothing) { EXPECT_EQ(wholeJSONNumber(GetParam().text), std::nullopt); }

INSTANTIATE_TEST_SUITE_P(Table, NoWholeNumber,
                         Values(NoWholeRow{"Fraction", "6.5"}, NoWholeRow{"FractionByExponent", "65e-1"},
                                NoWholeRow{"FractionThatADoubleDrops", "6.00000000000000000001"},
                                NoWholeRow{"TooSmallForADouble", "1e-400"},
                                NoWholeRow{"OneTooLarge", "9223372036854775808"},
                                NoWholeRow{"OneTooSmall", "-9223372036854775809"},
                                NoWholeRow{"OneDigitTooMany", "1e19"}, NoWholeRow{"TwoDigitsTooMany", "1e20"},
                                NoWholeRow{"ExponentBeyondAnInteger", "1e9999999999999999999"},
                                NoWholeRow{"NegativeExponentBeyondAnInteger", "1e-9999999999999999999"},
                                NoWholeRow{"MoreZerosThanAMachineHolds", "1e4000000000000000000"},
                                NoWholeRow{"LargestExponent", "10e9223372036854775807"},
                                NoWholeRow{"SmallestExponent", "0.1e-9223372036854775808"}),
                         [](const TestParamInfo<NoWholeRow>& row) { return row.param.name; });

class NoJSONNumber : public testing::TestWithParam<NoWholeRow> {};

TEST_P(NoJSONNumber, IsNotInTheGrammar) { EXPECT_FALSE(isJSONNumber(GetParam().text)); }

INSTANTIATE_TEST_SUITE_P(Table, NoJSONNumber,
                         Values(NoWholeRow{"Empty", ""}, NoWholeRow{"OnlyASign", "-"}, NoWholeRow{"TwoSigns", "--1"},
                                NoWholeRow{"PlusSign", "+1"}, NoWholeRow{"LeadingZero", "01"},
                                NoWholeRow{"BarePoint", ".5"}, NoWholeRow{"NothingBehindThePoint", "5."},
                                NoWholeRow{"NothingBehindThePointButAnExponent", "5.e1"},
                                NoWholeRow{"TwoPoints", "1.2.3"}, NoWholeRow{"EmptyExponent", "1e"},
                                NoWholeRow{"ExponentThatIsASign", "1e+"}, NoWholeRow{"ExponentWithTwoSigns", "1e+-1"},
                                NoWholeRow{"Text", "1x"}),
                         [](const TestParamInfo<NoWholeRow>& row) { return row.param.name; });

}  // namespace
}  // namespace halvo
