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

TEST_F(ClientOutputScenario, AnInstallThatIsNotWaitedForIsFinishedByTheHelper) {
  start();
  const PackageFiles package = machine.package({.extra = {"--postinstall", waitingScript(mac())}});

  const CommandResult result = machine.app(ProductMachine::install(package, {"--timeout", "1"}));

  EXPECT_EQ(result.status, 75);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(
      result.err,
      "halvo-app: The helper did not reply within the 1 s that --timeout gives it. What it has begun, it finishes: "
      "the last lines of /var/log/halvo-install.log say how far it is.\n");
  letItGo(mac());
  EXPECT_TRUE(waitUntil([&] { return machine.job("gui/501", "com.halvo.daemon").has_value(); }));
}

TEST_F(ClientOutputScenario, AManifestMayComeThroughAPipe) {
  start();
  const PackageFiles package = machine.package({});

  const CommandResult result = mac().run(
      machine.user(),
      {"/bin/sh", "-c",
       "cat " + package.manifest + " | " + ProductMachine::kAppProgram + " install " + package.path + " --manifest -"});

  EXPECT_EQ(result.out, std::string(kInstalledReply) + "\n") << result.err;
}

TEST_F(ClientOutputScenario, AnInterruptEndsItWithAStatusOfItsOwnWhateverItWaitsFor) {
  start();
  const std::string fifo = "/Users/user501/manifest";
  const std::string app = std::string(ProductMachine::kAppProgram) + " install /Users/user501/a.pkg --manifest " + fifo;

  // Opening the FIFO for writing waits until the program reads it. What a shell starts aside ignores interrupts.
  const CommandResult result = mac().run(
      machine.user(),
      {"/bin/sh", "-c", "mkfifo " + fifo + "; " + app + " & exec 3>" + fifo + "; kill -INT $!; exec 3>&-; wait $!"});

  EXPECT_EQ(result.status, 130);
  EXPECT_EQ(result.err, "\nhalvo-app: interrupted; what the helper has begun, it finishes\n");
}

TEST_F(ClientOutputScenario, AMissingPackageIsToldBeforeAnybodyIsAskedForAPassword) {
  start();
  PackageFiles package = machine.package({});
  package.path = "/Users/user501/missing.pkg";

  const CommandResult result = machine.app(ProductMachine::install(package));

  EXPECT_EQ(result.status, 66);
  EXPECT_EQ(result.err, "halvo-app: The package /Users/user501/missing.pkg is not there: check the path.\n");
  EXPECT_EQ(mac().readState("authorization-prompts"), "");
  EXPECT_FALSE(machine.helperProcess().has_value());
}

TEST_F(ClientOutputScenario, WhereNothingWasInstalledNothingWasCopiedBack) {
  start();

  const CommandResult result =
      machine.app(ProductMachine::install(machine.package({.extra = {"--truncate-payload", "60000"}})));

  EXPECT_THAT(result.out, StartsWith(R"({"code":"rolled_back")"));
  EXPECT_THAT(result.err, StartsWith("halvo-app: The installer failed. Nothing of the product had been installed, so "
                                     "nothing was copied back; "));
}

}  // namespace
}  // namespace halvo::sim
