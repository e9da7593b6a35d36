#include "HalvoHelper/system/RealProcessRunner.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include "HalvoHelper/testing/ProcessState.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

using testing::StartsWith;

const std::string kChild = HALVO_CHILD_REPORT;

ProcessResult runChild(const std::vector<std::string>& arguments) { return RealProcessRunner().run(kChild, arguments); }

// Leaves it to be reaped by whoever started it.
void waitUntilAChildHasExited() {
  siginfo_t child{};
  ::waitid(P_ALL, 0, &child, WEXITED | WNOWAIT);
}

ProcessResult runShell(const std::string& script) { return RealProcessRunner().run("/bin/sh", {"-c", script}); }

TEST(RealProcessRunnerTest, CapturesStandardOutput) {
  EXPECT_EQ(runShell("echo hello"), (ProcessResult{.code = 0, .output = "hello\n"}));
}

TEST(RealProcessRunnerTest, CapturesAToolThatWritesToStandardErrorOnly) {
  EXPECT_EQ(runShell("echo trouble >&2"), (ProcessResult{.code = 0, .output = "trouble\n"}));
}

TEST(RealProcessRunnerTest, BothStreamsArriveInTheOrderWritten) {
  EXPECT_EQ(runShell("echo 1; echo 2 >&2; echo 3; echo 4 >&2").output, "1\n2\n3\n4\n");
}

TEST(RealProcessRunnerTest, ASilentToolLeavesEmptyOutput) {
  EXPECT_EQ(runShell(":"), (ProcessResult{.code = 0, .output = ""}));
}

TEST(RealProcessRunnerTest, OutputIsNeitherTrimmedNorCutAtANul) {
  EXPECT_EQ(runShell(R"(printf '  a\000b\r\n\n')").output, std::string("  a\0b\r\n\n", 8));
}

class OutputSize : public testing::TestWithParam<std::size_t> {};

TEST_P(OutputSize, ArrivesWholeHoweverMuchItIs) {
  const std::string size = std::to_string(GetParam());

  const ProcessResult result = runChild({"flood", size});

  EXPECT_EQ(result.code, 0);
  EXPECT_TRUE(result.output == std::string(GetParam(), 'x')) << "got " << result.output.size() << " bytes";
}

INSTANTIATE_TEST_SUITE_P(AroundThePipeBufferAndFarAbove, OutputSize,
                         testing::Values(2, 65'534, 65'536, 65'538, 200'000, 8'388'608));

TEST(RealProcessRunnerTest, OutputThatIsNotUtf8IsDroppedWholeAndTheStatusKept) {
  EXPECT_EQ(runShell(R"(printf 'fine\n\377'; exit 4)"), (ProcessResult{.code = 4, .output = ""}));
}

TEST(RealProcessRunnerTest, OutputBeyondAsciiIsKept) { EXPECT_EQ(runShell("printf 'é€😀'").output, "é€😀"); }

// The pieces that such output is read in end anywhere in a character.
const std::string kManyEuros = "yes '€€€€€€€€€€' | head -n 10000 | tr -d '\\n'";

std::string repeated(const std::string& text, std::size_t times) {
  std::string whole;
  for (std::size_t i = 0; i < times; ++i) whole += text;
  return whole;
}

TEST(RealProcessRunnerTest, MuchOutputBeyondAsciiIsKept) {
  EXPECT_TRUE(runShell(kManyEuros).output == repeated("€", 100'000));
}

TEST(RealProcessRunnerTest, MuchOutputThatEndsInsideACharacterIsDroppedWhole) {
  EXPECT_TRUE(runShell(kManyEuros + R"(; printf '\342\202')").output.empty());
}

TEST(RealProcessRunnerTest, AnswersTheExitStatus) {
  EXPECT_EQ(runShell("exit 1").code, 1);
  EXPECT_EQ(runShell("exit 78").code, 78);
  EXPECT_EQ(runShell("exit 255").code, 255);
}

TEST(RealProcessRunnerTest, DeathByASignalAnswersItsBareNumberAndKeepsTheOutput) {
  EXPECT_EQ(runShell("echo begun; kill -KILL $$"), (ProcessResult{.code = SIGKILL, .output = "begun\n"}));
  EXPECT_EQ(runShell("kill -TERM $$").code, SIGTERM);
}

TEST(RealProcessRunnerTest, AMissingToolCannotBeStarted) {
  EXPECT_EQ(RealProcessRunner().run("/no/such/tool", {"x"}),
            (ProcessResult{.code = -1, .output = "spawn failed: No such file or directory"}));
}

TEST(RealProcessRunnerTest, AToolNameIsNeverLookedUpInThePath) {
  EXPECT_EQ(RealProcessRunner().run("sh", {"-c", "echo found"}).code, -1);
}

TEST(RealProcessRunnerTest, AFileThatIsNotExecutableCannotBeStarted) {
  const TemporaryDirectory directory;
  const std::string script = directory.makeFile("script", "#!/bin/sh\necho ran\n");

  EXPECT_EQ(RealProcessRunner().run(script, {}),
            (ProcessResult{.code = -1, .output = "spawn failed: Permission denied"}));
}

TEST(RealProcessRunnerTest, AnExecutableOfNoKnownFormatCannotBeStarted) {
  const TemporaryDirectory directory;
  const std::string file = directory.makeFile("tool", "no program\n");
  std::filesystem::permissions(file, std::filesystem::perms::owner_all);

  const ProcessResult result = RealProcessRunner().run(file, {});

  EXPECT_EQ(result.code, -1);
  EXPECT_THAT(result.output, StartsWith("spawn failed: "));
}

TEST(RealProcessRunnerTest, ADirectoryCannotBeStarted) {
  EXPECT_EQ(RealProcessRunner().run("/usr", {}),
            (ProcessResult{.code = -1, .output = "spawn failed: Permission denied"}));
}

TEST(RealProcessRunnerTest, AnEmptyToolNameCannotBeStarted) {
  EXPECT_EQ(RealProcessRunner().run("", {}),
            (ProcessResult{.code = -1, .output = "spawn failed: No such file or directory"}));
}

TEST(RealProcessRunnerTest, AnEmptyListGivesTheToolItsOwnPathOnly) {
  EXPECT_EQ(runChild({}), (ProcessResult{.code = 0, .output = "no arguments: " + kChild}));
}

TEST(RealProcessRunnerTest, ArgumentsArriveExactly) {
  EXPECT_EQ(runChild({"arguments", "a b", "", "\"q\" 'q'", "line\nfeed", "$HOME `id` *", "-x", "\\", "é"}).output,
            "[a b][][\"q\" 'q'][line\nfeed][$HOME `id` *][-x][\\][é]");
}

TEST(RealProcessRunnerTest, TheChildHoldsTheThreeStandardDescriptorsOnly) {
  const OpenedDescriptors held(64);

  EXPECT_EQ(runChild({"descriptors"}).output, "0 1 2 ");
}

TEST(RealProcessRunnerTest, TheChildHoldsTheThreeStandardDescriptorsOnlyWhateverOtherThreadsDo) {
  const RealProcessRunner runner;
  const DescriptorChurn churn(runner, 4);

  const std::vector<std::string> outputs = repeat(200, [] { return runChild({"descriptors"}).output; });

  EXPECT_THAT(outputs, testing::Each("0 1 2 "));
}

TEST(RealProcessRunnerTest, HoldsNothingMeanwhileThatAProgramStartedElsewhereWouldGet) {
  const TemporaryDirectory directory;
  const std::string fifo = directory.makeFifo("go");
  const std::vector<int> before = inheritableDescriptors();
  std::thread running([&] { runShell("read line < '" + fifo + "'"); });

  // Opens once the tool runs.
  UniqueDescriptor go(::open(fifo.c_str(), O_WRONLY | O_CLOEXEC));
  const std::vector<int> meanwhile = inheritableDescriptors();
  go.close();
  running.join();

  EXPECT_EQ(meanwhile, before);
}

TEST(RealProcessRunnerTest, TheChildLeadsItsOwnProcessGroup) { EXPECT_EQ(runChild({"process-group"}).output, "own"); }

TEST(RealProcessRunnerTest, TheChildBlocksNoSignalThoughTheCallingThreadBlocksAll) {
  const AllSignalsBlocked blocked;

  EXPECT_EQ(runChild({"blocked-signals"}).output, "");
}

TEST(RealProcessRunnerTest, TheChildIgnoresNoSignalThoughTheParentDoes) {
  const IgnoredSignal pipe(SIGPIPE);
  const IgnoredSignal hangup(SIGHUP);

  EXPECT_EQ(runChild({"ignored-signals"}).output, "");
}

TEST(RealProcessRunnerTest, TheChildReadsTheParentsStandardInput) {
  const TemporaryDirectory directory;
  const StandardInputFrom input(directory.makeFile("input", "from the parent\n"));

  EXPECT_EQ(RealProcessRunner().run("/bin/cat", {}).output, "from the parent\n");
}

TEST(RealProcessRunnerTest, TheChildInheritsEnvironmentAndWorkingDirectory) {
  const std::string here = std::filesystem::current_path().string();
  ::setenv("HALVO_INHERITED", "yes indeed", 1);

  EXPECT_EQ(runShell("echo $HALVO_INHERITED; pwd -P").output, "yes indeed\n" + here + "\n");

  ::unsetenv("HALVO_INHERITED");
}

TEST(RealProcessRunnerTest, OutputOfAGrandchildThatOutlivesTheToolIsWaitedFor) {
  const TemporaryDirectory directory;
  const std::string fifo = directory.makeFifo("go");
  std::thread later([&] {
    std::ofstream go(fifo);
    waitUntilAChildHasExited();
    go << "go\n";
  });

  const std::string output = runShell("echo early; (read line < '" + fifo + "'; echo late) &").output;
  later.join();

  EXPECT_EQ(output, "early\nlate\n");
}

TEST(RealProcessRunnerTest, SixteenThreadsGetTheirOwnOutputEach) {
  const std::vector<std::string> outputs = onThreads(16, 20, [](const std::string& mark) {
    return runChild({"arguments", mark}).output;
  });

  EXPECT_EQ(outputs, expectedMarks(16, 20));
}

TEST(RealProcessRunnerTest, NothingIsLeftOpenOrUnreaped) {
  const std::vector<int> before = openDescriptors();

  onThreads(16, 5, [](const std::string& mark) { return runChild({"arguments", mark}).output; });
  runShell("kill -KILL $$");
  RealProcessRunner().run("/no/such/tool", {});

  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST(RealProcessRunnerTest, WithoutDescriptorsNothingIsStarted) {
  // The sanitizer opens a file when it first checks the type of an object, and remembers what it found.
  ASSERT_EQ(runShell("true").code, 0);
  const NoFreeDescriptors full;

  EXPECT_EQ(runShell("echo ran"), (ProcessResult{.code = -1, .output = "spawn failed: Too many open files"}));
}

}  // namespace
}  // namespace halvo
