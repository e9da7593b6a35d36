#include "platform/ProcessList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mac-checks/objc/doubles/SysctlDouble.h"

namespace halvo::sim {
namespace {

TEST(ProcessListTest, ARowIsReadFromTheKernelsTable) {
  const ProcessTable table({processRow(77, 10, 501, "installer", 600)});

  const std::vector<ProcessEntry> all = halvoRunningProcesses().value();

  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0].process, 77);
  EXPECT_EQ(all[0].parent, 10);
  EXPECT_EQ(all[0].user, 501U);
  EXPECT_EQ(all[0].name, "installer");
  EXPECT_NEAR(static_cast<double>(all[0].age.count()), 600, 5);
}

TEST(ProcessListTest, ANameThatFillsItsRoomIsWhole) {
  const ProcessTable table({processRow(1, 0, 0, "0123456789abcdefgh", 0)});

  EXPECT_EQ(halvoRunningProcesses().value().at(0).name, "0123456789abcdef");
}

TEST(ProcessListTest, AProcessOfTheFutureIsNew) {
  const ProcessTable table({processRow(1, 0, 0, "x", -3600)});

  EXPECT_EQ(halvoRunningProcesses().value().at(0).age, std::chrono::seconds(0));
}

TEST(ProcessListTest, ATableThatGrowsMeanwhileIsAskedForAgain) {
  ProcessTable table({processRow(1, 0, 0, "launchd", 9)});
  table.growBy(1000, 2);

  EXPECT_EQ(halvoRunningProcesses().value().size(), 2001U);
}

TEST(ProcessListTest, ATableThatKeepsGrowingIsGivenUp) {
  ProcessTable table({processRow(1, 0, 0, "launchd", 9)});
  table.growBy(1000, 1000);

  EXPECT_FALSE(halvoRunningProcesses().has_value());
}

TEST(ProcessListTest, ARefusalOfTheKernelGivesNothing) {
  ProcessTable table({processRow(1, 0, 0, "launchd", 9)});
  table.refuse();

  EXPECT_FALSE(halvoRunningProcesses().has_value());
}

}  // namespace
}  // namespace halvo::sim
