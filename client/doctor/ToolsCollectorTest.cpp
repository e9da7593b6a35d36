#include "client/doctor/ToolsCollector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const ProcessEntry kLaunchd{.process = 1, .parent = 0, .user = 0, .name = "launchd"};
const ProcessEntry kHelper{.process = 10, .parent = 1, .user = 0, .name = "halvo-helper"};
const ProcessEntry kShell{.process = 20, .parent = 1, .user = 0, .name = "sudo"};
const ProcessEntry kImpostor{.process = 30, .parent = 1, .user = 501, .name = "halvo-helper"};

struct ToolRow {
  const char* name;
  ProcessEntry process;
};

class ToolOfTheHelper : public testing::TestWithParam<ToolRow> {};

TEST_P(ToolOfTheHelper, IsFound) {
  const auto tools = toolsOfTheHelper({kLaunchd, kHelper, GetParam().process});

  EXPECT_THAT(tools, ElementsAre(testing::Field(&Tool::name, GetParam().process.name)));
}

INSTANTIATE_TEST_SUITE_P(
    Table, ToolOfTheHelper,
    testing::Values(ToolRow{"Installer", {.process = 11, .parent = 10, .user = 0, .name = "installer"}},
                    ToolRow{"Pkgutil", {.process = 11, .parent = 10, .user = 0, .name = "pkgutil"}},
                    ToolRow{"Launchctl", {.process = 11, .parent = 10, .user = 0, .name = "launchctl"}},
                    ToolRow{"Dscl", {.process = 11, .parent = 10, .user = 0, .name = "dscl"}},
                    ToolRow{"Killall", {.process = 11, .parent = 10, .user = 0, .name = "killall"}},
                    ToolRow{"OutlivedTheHelper", {.process = 11, .parent = 1, .user = 0, .name = "installer"}}),
    [](const auto& row) { return std::string(row.param.name); });

class ForeignProcess : public testing::TestWithParam<ToolRow> {};

TEST_P(ForeignProcess, IsNone) {
  EXPECT_THAT(toolsOfTheHelper({kLaunchd, kHelper, kShell, kImpostor, GetParam().process}), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Table, ForeignProcess,
    testing::Values(ToolRow{"OfAnAdministratorsShell", {.process = 11, .parent = 20, .user = 0, .name = "installer"}},
                    ToolRow{"OfAnOrdinaryUser", {.process = 11, .parent = 10, .user = 501, .name = "installer"}},
                    ToolRow{"OfAnImpostor", {.process = 11, .parent = 30, .user = 0, .name = "installer"}},
                    ToolRow{"OfAnotherName", {.process = 11, .parent = 10, .user = 0, .name = "installerd"}},
                    ToolRow{"WithoutParent", {.process = 11, .parent = 99, .user = 0, .name = "installer"}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ToolsCollectorTest, AllToolsAreFoundInTheOrderOfTheProcesses) {
  const auto tools = toolsOfTheHelper({kHelper,
                                       {.process = 12, .parent = 10, .user = 0, .name = "pkgutil"},
                                       kShell,
                                       {.process = 11, .parent = 10, .user = 0, .name = "installer"}});

  EXPECT_THAT(tools, ElementsAre(testing::Field(&Tool::process, 12), testing::Field(&Tool::process, 11)));
}

TEST(ToolsCollectorTest, AToolKeepsItsNumberAndAge) {
  const auto tools = toolsOfTheHelper(
      {kHelper, {.process = 11, .parent = 10, .user = 0, .name = "installer", .age = std::chrono::seconds(42)}});

  ASSERT_EQ(tools.size(), 1U);
  EXPECT_EQ(tools[0].process, 11);
  EXPECT_EQ(tools[0].age, std::chrono::seconds(42));
}

}  // namespace
}  // namespace halvo
