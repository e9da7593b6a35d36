// What a person or a script sees of the application's program.
#include "tests/Scenario.h"

namespace halvo::sim {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

struct OutputRow {
  const char* name;
  const char* redirection;
};

class UnwritableOutputScenario : public Scenario, public testing::WithParamInterface<OutputRow> {};

TEST_P(UnwritableOutputScenario, IsAnError) {
  start();

  const CommandResult result = mac().run(
      machine.user(), {"/bin/sh", "-c", std::string(ProductMachine::kAppProgram) + " ping " + GetParam().redirection});

  EXPECT_EQ(result.status, 74);
  EXPECT_EQ(result.err, "halvo-app: Standard output could not be written to the end.\n");
}

INSTANTIATE_TEST_SUITE_P(Table, UnwritableOutputScenario,
                         testing::Values(OutputRow{"OpenForReadingOnly", "1</dev/null"}, OutputRow{"Closed", ">&-"},
                                         OutputRow{"InputAndOutputClosed", "<&- >&-"}),
                         [](const auto& row) { return std::string(row.param.name); });

using ClientOutputScenario = Scenario;

TEST_F(ClientOutputScenario, AnInstallThatTakesLongerThanAPersonExpectsShowsItsLog) {
  constexpr const char* kScript = "/Users/user501/Downloads/slow-postinstall";
  mac().writeFile(kScript, "#!/bin/sh\nsleep 3\n", 0755);
  start();

  const CommandResult result =
      machine.app(ProductMachine::install(machine.package({.extra = {"--postinstall", mac().path(kScript).string()}})));

  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.err, StartsWith("halvo-app: Waiting for the helper; interrupting this does not stop it. It makes "
                                     "one change at a time, and does not tell whether another one comes first. New "
                                     "lines of /var/log/halvo-install.log:\n  "));
  EXPECT_THAT(result.err, HasSubstr(": package trusted: Developer ID Installer: "));
  EXPECT_THAT(result.err, HasSubstr(": daemon bootstrap gui/501 rc=0\n"));
}

}  // namespace
}  // namespace halvo::sim
