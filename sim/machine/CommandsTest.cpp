#include "sim/machine/Commands.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/support/ChildProcess.h"
#include "sim/support/CodeSignature.h"

namespace halvo::sim {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Words = std::vector<std::string>;

struct Outcome {
  int status;
  std::string out;
  std::string err;
};

Outcome command(const Words& words) {
  std::ostringstream out;
  std::ostringstream err;
  const int status = halvoSim(words, {.out = out, .err = err});
  return {status, out.str(), err.str()};
}

struct UsageRow {
  std::string name;
  Words words;
  std::string sentence;
};

class WrongUsage : public testing::TestWithParam<UsageRow> {};

TEST_P(WrongUsage, IsExplained) {
  const Outcome outcome = command(GetParam().words);

  EXPECT_EQ(outcome.status, 64);
  EXPECT_THAT(outcome.err, HasSubstr(GetParam().sentence));
  EXPECT_EQ(outcome.out, "");
}

const std::string kRunUsage = "`run`, and nothing else, takes `--` and a command.";

INSTANTIATE_TEST_SUITE_P(
    Table, WrongUsage,
    testing::Values(UsageRow{"Nothing", {}, "A subcommand is required"},
                    UsageRow{"UnknownCommand", {"boot"}, "A subcommand is required"},
                    UsageRow{"NewWithoutFolder", {"new"}, "DIR is required"},
                    UsageRow{"NewWithTwo", {"new", "a", "b"}, "b"}, UsageRow{"NewWithEmptyName", {"new", ""}, "DIR"},
                    UsageRow{"NewWithUnknownOption", {"new", "a", "--halp"}, "--halp"},
                    UsageRow{"NewWithCommand", {"new", "a", "--", "/bin/sh"}, kRunUsage},
                    UsageRow{"AppWithoutFolder", {"app"}, "DIR is required"},
                    UsageRow{"RunWithoutCommand", {"run", "a", "--"}, kRunUsage},
                    UsageRow{"RunWithoutSeparator", {"run", "a"}, kRunUsage},
                    UsageRow{"RunWithoutFolder", {"run", "--", "/bin/sh"}, "DIR is required"},
                    UsageRow{"RunWithBadUser", {"run", "a", "--user", "user501", "--", "/bin/sh"}, "--user"},
                    UsageRow{"CheckWithMore", {"check", "x"}, "x"},
                    UsageRow{"SignWithoutTeam", {"sign", "f", "--identifier", "i"}, "--team is required"},
                    UsageRow{"PackageWithoutVersion", {"package", "p", "--report", "r"}, "--version is required"},
                    UsageRow{"PackageWithOptionTwice",
                             {"package", "p", "--report", "r", "--version", "1", "--version", "2"},
                             "--version"}),
    [](const auto& row) { return row.param.name; });

TEST(CommandsTest, HelpNamesEveryCommand) {
  const Outcome outcome = command({"--help"});

  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, testing::AllOf(HasSubstr("new "), HasSubstr("run "), HasSubstr("app "), HasSubstr("check "),
                                          HasSubstr("sign "), HasSubstr("package ")));
}

TEST(CommandsTest, HelpForACommandShowsItsUsageAndMakesNothing) {
  const TemporaryDirectory folder;
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());

  const Outcome outcome = command({"new", "--help"});

  std::filesystem::current_path(before);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, HasSubstr("halvo-sim new [OPTIONS] DIR"));
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(CommandsTest, NewRefusesAFolderThatHoldsSomething) {
  const TemporaryDirectory folder;
  folder.write("mine", "precious");

  const Outcome outcome = command({"new", folder.path().string()});

  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "halvo-sim: " + folder.path().string() + " is not an empty folder; name one that does not exist yet.\n");
  EXPECT_EQ(folder.read("mine"), "precious");
}

TEST(CommandsTest, NewLeavesNothingBehindWhereItCannotBuild) {
  const Outcome outcome = command({"new", "/proc/nowhere/mac"});

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("cannot be made"));
}

TEST(CommandsTest, RunAndAppNeedAMachine) {
  const TemporaryDirectory folder;
  const std::string name = folder.path().string();
  const std::string advice = "halvo-sim: " + name + " is not a machine; make one with `halvo-sim new " + name + "`.\n";

  EXPECT_EQ(command({"run", name, "--", "/bin/sh"}).err, advice);
  EXPECT_EQ(command({"app", name}).err, advice);
  EXPECT_EQ(command({"app", name}).status, 1);
}

TEST(CommandsTest, SignPutsTheSignatureOn) {
  const TemporaryDirectory folder;
  const auto file = folder.write("program", "bytes");

  EXPECT_EQ(command({"sign", file.string(), "--identifier", "com.x", "--team", "TEAM"}).status, 0);

  const UniqueDescriptor open(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
  EXPECT_EQ(readCodeSignature(open.get()), (CodeSignature{"com.x", "TEAM", "apple generic"}));
}

TEST(CommandsTest, SignSaysWhatItCannotSign) {
  const Outcome outcome = command({"sign", "/nowhere/x", "--identifier", "com.x", "--team", "TEAM"});

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, StartsWith("halvo-sim: /nowhere/x cannot be signed; name a program that exists"));
}

TEST(CommandsTest, CheckTellsEveryWayAndThatOneWorks) {
  const Outcome outcome = command({"check"});

  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, HasSubstr("as root, with several accounts: "));
  EXPECT_THAT(outcome.out, HasSubstr("in a user namespace, with one account: "));
  EXPECT_THAT(outcome.out, HasSubstr("in a user namespace with the host's processes, with one account: "));
}

TEST(ChildProcessTest, NoDescriptorGetsIn) {
  const int inherited = ::open("/dev/null", O_RDONLY);
  const UniqueDescriptor owner(inherited);

  EXPECT_EQ(runChild({"sh", "-c", "test -e /proc/self/fd/" + std::to_string(inherited)}).status, 1);
}

}  // namespace
}  // namespace halvo::sim
