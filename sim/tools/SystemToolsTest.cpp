#include "sim/tools/SystemTools.h"

#include <gmock/gmock.h>

#include "sim/tools/testing/ToolMachine.h"

namespace halvo::sim {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

const std::vector<std::string> kListUsers = {".", "-list", "/Users", "UniqueID"};

TEST(DsclToolTest, ListsAccountsInColumns) {
  const ToolMachine machine;
  machine.writeState("users", "root 0\nnobody -2\nuser501 501\n_a_name_longer_than_its_column 89\n");

  EXPECT_EQ(machine.run("dscl", kListUsers), (ToolAnswer{.status = 0,
                                                         .out = "root                    0\n"
                                                                "nobody                  -2\n"
                                                                "user501                 501\n"
                                                                "_a_name_longer_than_its_column 89\n",
                                                         .err = ""}));
}

TEST(DsclToolTest, AMachineWithoutAccountsListsNothing) {
  const ToolMachine machine;
  machine.writeState("users", "");

  EXPECT_EQ(machine.run("dscl", kListUsers), (ToolAnswer{.status = 0, .out = "", .err = ""}));
}

TEST(DsclToolTest, AMachineWithoutADirectoryIsAnError) {
  const ToolMachine machine;

  EXPECT_EQ(machine.run("dscl", kListUsers),
            (ToolAnswer{.status = 184, .out = "", .err = "<dscl_cmd> DS Error: -14008 (eDSNodeNotFound)\n"}));
}

TEST(DsclToolTest, OtherArgumentsGetTheUsage) {
  const ToolMachine machine;

  EXPECT_EQ(machine.run("dscl", {".", "-list", "/Groups"}),
            (ToolAnswer{.status = 64, .out = "", .err = "Usage: dscl . -list /Users UniqueID\n"}));
}

struct ToolRow {
  const char* name;
  const char* calledAs;
  const char* recordedAs;
};

class SystemTool : public testing::TestWithParam<ToolRow> {};

TEST_P(SystemTool, ActsByItsNameAndIsRecordedByItsPath) {
  const ToolMachine machine;

  EXPECT_THAT(machine.run(GetParam().calledAs, {"-x"}).err, HasSubstr("Usage: "));

  EXPECT_THAT(machine.readState("calls.jsonl"), HasSubstr(std::string("\"tool\":\"") + GetParam().recordedAs + "\""));
}

INSTANTIATE_TEST_SUITE_P(Table, SystemTool,
                         testing::Values(ToolRow{"Installer", "/usr/sbin/installer", "/usr/sbin/installer"},
                                         ToolRow{"Pkgutil", "pkgutil", "/usr/sbin/pkgutil"},
                                         ToolRow{"Dscl", "./dscl", "/usr/bin/dscl"},
                                         ToolRow{"Launchctl", "/bin/launchctl", "/bin/launchctl"}),
                         [](const auto& row) { return row.param.name; });

TEST(SystemToolsTest, ACallIsRecordedWithItsArgumentsAndStatus) {
  const ToolMachine machine;
  const std::string package = machine.package("1.2.0");

  machine.install(package);

  EXPECT_THAT(machine.readState("calls.jsonl"), EndsWith(R"("tool":"/usr/sbin/installer","arguments":["-pkg",")" +
                                                         package + R"(","-target","/"],"status":0})" + "\n"));
}

TEST(SystemToolsTest, AnotherNameIsExplained) {
  const ToolMachine machine;

  EXPECT_EQ(machine.run("/usr/bin/sim-tools", {}),
            (ToolAnswer{.status = 64,
                        .out = "",
                        .err = "sim-tools: this program acts by its name; call it as installer, pkgutil, dscl, "
                               "launchctl or killall.\n"}));
}

}  // namespace
}  // namespace halvo::sim
