#include "sim/support/Files.h"

#include <gtest/gtest.h>

namespace halvo::sim {
namespace {

TEST(FilesTest, AFileThatCannotBeReadToItsEndGivesWhatCameBeforeWithoutAThrow) {
  EXPECT_EQ(wholeFile("/proc/self/mem"), "");  // opens, and fails at the first byte: nothing is mapped there
}

TEST(FilesTest, AFileThatIsNotThereGivesNothing) { EXPECT_EQ(wholeFile("/nowhere/at/all"), ""); }

}  // namespace
}  // namespace halvo::sim
