#include "sim/support/WholeFile.h"

#include <gtest/gtest.h>

namespace halvo::sim {
namespace {

TEST(WholeFileTest, AFileThatCannotBeReadToItsEndGivesWhatCameBeforeWithoutAThrow) {
  EXPECT_EQ(wholeFile("/proc/self/mem"), "");  // opens, and fails at the first byte: nothing is mapped there
}

TEST(WholeFileTest, AFileThatIsNotThereGivesNothing) { EXPECT_EQ(wholeFile("/nowhere/at/all"), ""); }

}  // namespace
}  // namespace halvo::sim
