#include "sim/machine/Commands.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/machine/HostProcess.h"
#include "sim/support/CodeSignature.h"
#include "sim/support/TemporaryDirectory.h"

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

TEST_P(WrongUsage, IsExplainedWithWhatToDo) {
  const Outcome outcome = command(GetParam().words);

  EXPECT_EQ(outcome.status, 64);
  EXPECT_EQ(outcome.err, "halvo-sim: " + GetParam().sentence + " `halvo-sim --help` shows the commands.\n");
  EXPECT_EQ(outcome.out, "");
}

const std::string kRunUsage = "`run` takes a folder, perhaps `--user UID`, then `--` and a command.";
const std::string kSignUsage = "`sign` takes a file, `--identifier I`, `--team T` and perhaps `--anchor A`.";

INSTANTIATE_TEST_SUITE_P(
    Table, WrongUsage,
    testing::Values(UsageRow{"Nothing", {}, "a command is missing."},
                    UsageRow{"UnknownCommand", {"boot"}, "there is no command `boot`."},
                    UsageRow{"HelpWithMore", {"--help", "x"}, "there is no command `--help`."},
                    UsageRow{"NewWithoutFolder", {"new"}, "`new` takes one folder."},
                    UsageRow{"NewWithTwo", {"new", "a", "b"}, "`new` takes one folder."},
                    UsageRow{"NewWithEmptyName", {"new", ""}, "`new` takes one folder."},
                    UsageRow{"AppWithoutFolder", {"app"}, "`app` takes the folder of a machine."},
                    UsageRow{"RunWithoutAnything", {"run"}, kRunUsage},
                    UsageRow{"RunWithoutCommand", {"run", "a", "--"}, kRunUsage},
                    UsageRow{"RunWithoutSeparator", {"run", "a", "/bin/sh"}, kRunUsage},
                    UsageRow{"RunWithoutFolder", {"run", "--", "/bin/sh"}, kRunUsage},
                    UsageRow{"RunWithBadUser", {"run", "a", "--user", "user501", "--", "/bin/sh"}, kRunUsage},
                    UsageRow{"RunWithUnknownOption", {"run", "a", "--as", "501", "--", "/bin/sh"}, kRunUsage},
                    UsageRow{"CheckWithMore", {"check", "x"}, "`check` takes nothing."},
                    UsageRow{"SignWithoutFile", {"sign"}, kSignUsage},
                    UsageRow{"SignWithoutTeam", {"sign", "f", "--identifier", "i"}, kSignUsage},
                    UsageRow{"SignWithoutIdentifier", {"sign", "f", "--team", "t"}, kSignUsage},
                    UsageRow{"SignWithUnknownOption", {"sign", "f", "--identity", "i"}, kSignUsage}),
    [](const auto& row) { return row.param.name; });

TEST(CommandsTest, HelpNamesEveryCommand) {
  const Outcome outcome = command({"--help"});

  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, HasSubstr("halvo-sim run DIR [--user UID] -- CMD..."));
}

TEST(CommandsTest, PackageIsPassedOn) { EXPECT_EQ(command({"package"}).status, 64); }

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

TEST(HostProcessTest, CollectsWhatAProgramPrints) {
  const HostResult result = runOnHost({"sh", "-c", "echo out; echo err >&2; exit 3"});

  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.out, "out\n");
  EXPECT_EQ(result.err, "err\n");
}

TEST(HostProcessTest, AProgramThatIsMissingIsTold) {
  EXPECT_EQ(runOnHost({"halvo-no-such-program"}).status, kProgramMissing);
}

TEST(HostProcessTest, NoDescriptorGetsIn) {
  const int inherited = ::open("/dev/null", O_RDONLY);
  const UniqueDescriptor owner(inherited);

  EXPECT_EQ(runOnHost({"sh", "-c", "test -e /proc/self/fd/" + std::to_string(inherited)}).status, 1);
}

}  // namespace
}  // namespace halvo::sim
