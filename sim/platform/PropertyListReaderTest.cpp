#include "sim/platform/PropertyLists.h"

#include <gtest/gtest.h>

namespace halvo::sim {
namespace {

using testing::Values;

class SoundInteger : public testing::TestWithParam<const char*> {};
TEST_P(SoundInteger, IsOne) { EXPECT_TRUE(isPropertyListInteger(GetParam())); }
INSTANTIATE_TEST_SUITE_P(Table, SoundInteger,
                         Values("0", "007", "+7", "-7", " -\n7", "0x1f", "0X1F", "-0x1", "18446744073709551615",
                                "-9223372036854775808"));

class UnsoundInteger : public testing::TestWithParam<const char*> {};
TEST_P(UnsoundInteger, IsNone) { EXPECT_FALSE(isPropertyListInteger(GetParam())); }
INSTANTIATE_TEST_SUITE_P(Table, UnsoundInteger,
                         Values("", " ", "-", "--7", "+-7", "7 ", "7x", "1f", "0x", "0x-1", "0x0x1", "7.0",
                                "18446744073709551616", "-9223372036854775809"));

class SoundReal : public testing::TestWithParam<const char*> {};
TEST_P(SoundReal, IsOne) { EXPECT_TRUE(isPropertyListReal(GetParam())); }
INSTANTIATE_TEST_SUITE_P(Table, SoundReal,
                         Values("0", "2.1", "-2.1", "+2.1e-3", "1e999", "1e-999", "nan", "-INF", "+infinity"));

class UnsoundReal : public testing::TestWithParam<const char*> {};
TEST_P(UnsoundReal, IsNone) { EXPECT_FALSE(isPropertyListReal(GetParam())); }
INSTANTIATE_TEST_SUITE_P(Table, UnsoundReal,
                         Values("", "-", "--1", "+-1", "+ 1", "\v1", "0x1", "0x1p3", "2.1.0", "2,1", "1e", "infinite",
                                "1 "));

class SoundDate : public testing::TestWithParam<const char*> {};
TEST_P(SoundDate, IsOne) { EXPECT_TRUE(isPropertyListDate(GetParam())); }
INSTANTIATE_TEST_SUITE_P(Table, SoundDate, Values("2026-11-21T04:00:00Z", "-0044-03-15T12:00:00Z"));

class UnsoundDate : public testing::TestWithParam<const char*> {};
TEST_P(UnsoundDate, IsNone) { EXPECT_FALSE(isPropertyListDate(GetParam())); }
INSTANTIATE_TEST_SUITE_P(Table, UnsoundDate,
                         Values("", "yesterday", "2026-11-21", "2026-11-21T04:00:00", "2026-11-21 04:00:00Z",
                                "2026-11-21T04:00:00Zx", "2026-11-2xT04:00:00Z", "--0044-03-15T12:00:00Z"));

}  // namespace
}  // namespace halvo::sim
