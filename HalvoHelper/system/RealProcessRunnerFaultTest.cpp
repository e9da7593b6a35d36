// What the runner answers when a system call fails.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <string>

#include "HalvoHelper/system/InheritedState.h"
#include "HalvoHelper/system/RealProcessRunner.h"
#include "HalvoHelper/testing/ProcessState.h"
#include "HalvoHelper/testing/SystemCallFaults.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/frameworks/testing/FrameworkProbe.h"

namespace halvo {
namespace {

using sim::FrameworkProbe;

ProcessResult runShell(const std::string& script) { return RealProcessRunner().run("/bin/sh", {"-c", script}); }

// Counts the calls of a function without making one fail.
SystemCallFault callsOf(const char* function) { return {function, 0, 0, 0}; }

class RunnerFaultTest : public testing::Test {
 protected:
  // Nothing that was opened, made or started may be left.
  void expectNothingLeft() const {
    EXPECT_EQ(openDescriptors(), descriptorsBefore_);
    EXPECT_EQ(FrameworkProbe::liveObjects(), objectsBefore_);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
  }

  std::vector<int> descriptorsBefore_ = openDescriptors();
  std::int64_t objectsBefore_ = FrameworkProbe::liveObjects();
};

// Calls before the tool runs.

struct FailingCall {
  const char* name;
  const char* function;
  int call;  // which one of the function's calls fails
};

class CallBeforeTheToolRuns : public RunnerFaultTest, public testing::WithParamInterface<FailingCall> {};

TEST_P(CallBeforeTheToolRuns, ThatFailsStartsNothingAndLeavesNothing) {
  const SystemCallFault spawns = callsOf("posix_spawn");
  const SystemCallFault fault(GetParam().function, ENOMEM, GetParam().call, GetParam().call);

  EXPECT_EQ(runShell("echo ran"), (ProcessResult{.code = -1, .output = "spawn failed: Cannot allocate memory"}));

  EXPECT_EQ(spawns.calls(), 0);
  expectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(Table, CallBeforeTheToolRuns,
                         testing::Values(FailingCall{"Pipe", "pipe", 1}, FailingCall{"MovingTheReadEnd", "fcntl", 1},
                                         FailingCall{"MovingTheWriteEnd", "fcntl", 2},
                                         FailingCall{"Attributes", "posix_spawnattr_init", 1},
                                         FailingCall{"SignalMask", "posix_spawnattr_setsigmask", 1},
                                         FailingCall{"SignalDefaults", "posix_spawnattr_setsigdefault", 1},
                                         FailingCall{"ProcessGroup", "posix_spawnattr_setpgroup", 1},
                                         FailingCall{"Flags", "posix_spawnattr_setflags", 1},
                                         FailingCall{"FileActions", "posix_spawn_file_actions_init", 1},
                                         FailingCall{"StandardInput", "posix_spawn_file_actions_addinherit_np", 1},
                                         FailingCall{"StandardOutput", "posix_spawn_file_actions_adddup2", 1},
                                         FailingCall{"StandardError", "posix_spawn_file_actions_adddup2", 2}),
                         [](const auto& row) { return row.param.name; });

TEST_F(RunnerFaultTest, AToolThatCannotBeStartedLeavesNothing) {
  const SystemCallFault fault("posix_spawn", EAGAIN);

  EXPECT_EQ(runShell("echo ran"),
            (ProcessResult{.code = -1, .output = "spawn failed: Resource temporarily unavailable"}));

  expectNothingLeft();
}

struct TwoFailingCalls {
  const char* name;
  const char* first;
  const char* second;
};

class TwoCallsBeforeTheToolRuns : public RunnerFaultTest, public testing::WithParamInterface<TwoFailingCalls> {};

TEST_P(TwoCallsBeforeTheToolRuns, AnswerTheErrorOfTheFirst) {
  const SystemCallFault first(GetParam().first, ENOMEM);
  const SystemCallFault second(GetParam().second, EINVAL);

  EXPECT_EQ(runShell("echo ran").output, "spawn failed: Cannot allocate memory");
}

INSTANTIATE_TEST_SUITE_P(Table, TwoCallsBeforeTheToolRuns,
                         testing::Values(TwoFailingCalls{"OfTheAttributes", "posix_spawnattr_setsigmask",
                                                         "posix_spawnattr_setflags"},
                                         TwoFailingCalls{"OfTheFileActions", "posix_spawn_file_actions_addinherit_np",
                                                         "posix_spawn_file_actions_adddup2"}),
                         [](const auto& row) { return row.param.name; });

TEST_F(RunnerFaultTest, TheErrorOfThePipeIsKeptWhenClosingFailsToo) {
  const SystemCallFault moving("fcntl", EMFILE, 2, 2);
  const SystemCallFault closing("close", EIO, 1, 3);

  EXPECT_EQ(runShell("echo ran").output, "spawn failed: Too many open files");
}

TEST_F(RunnerFaultTest, ObjectsThatWereMadeAreDestroyedOnce) {
  const SystemCallFault attributes = callsOf("posix_spawnattr_destroy");
  const SystemCallFault actions = callsOf("posix_spawn_file_actions_destroy");

  EXPECT_EQ(runShell("exit 3").code, 3);

  EXPECT_EQ(attributes.calls(), 1);
  EXPECT_EQ(actions.calls(), 1);
  expectNothingLeft();
}

TEST_F(RunnerFaultTest, AttributesThatWereNeverMadeAreNotDestroyed) {
  const SystemCallFault fault("posix_spawnattr_init", ENOMEM);
  const SystemCallFault destroyed = callsOf("posix_spawnattr_destroy");

  runShell("echo ran");

  EXPECT_EQ(destroyed.calls(), 0);
}

TEST_F(RunnerFaultTest, FileActionsThatWereNeverMadeAreNotDestroyed) {
  const SystemCallFault fault("posix_spawn_file_actions_init", ENOMEM);
  const SystemCallFault destroyed = callsOf("posix_spawn_file_actions_destroy");

  runShell("echo ran");

  EXPECT_EQ(destroyed.calls(), 0);
}

TEST_F(RunnerFaultTest, AStandardInputThatCannotBeAskedAboutIsNothing) {
  const SystemCallFault asking("fcntl", EBADF, 3, 3);
  const SystemCallFault inherited = callsOf("posix_spawn_file_actions_addinherit_np");

  EXPECT_EQ(runShell("cat; readlink /proc/self/fd/0"), (ProcessResult{.code = 0, .output = "/dev/null\n"}));

  EXPECT_EQ(inherited.calls(), 0);
}

TEST_F(RunnerFaultTest, ANothingThatCannotBeGivenAsStandardInputStartsNothing) {
  const SystemCallFault asking("fcntl", EBADF, 3, 3);
  const SystemCallFault opening("posix_spawn_file_actions_addopen", ENOMEM);

  EXPECT_EQ(runShell("echo ran"), (ProcessResult{.code = -1, .output = "spawn failed: Cannot allocate memory"}));

  expectNothingLeft();
}

// Reading what the tool writes.

TEST_F(RunnerFaultTest, AnInterruptedReadGoesOn) {
  const SystemCallFault fault("read", EINTR, 1, 3);

  EXPECT_EQ(runShell("echo whole"), (ProcessResult{.code = 0, .output = "whole\n"}));

  EXPECT_GE(fault.calls(), 5);
  expectNothingLeft();
}

TEST_F(RunnerFaultTest, OutputThatCannotBeReadToItsEndIsNone) {
  const SystemCallFault fault("read", EIO, 2, 2);

  EXPECT_EQ(runShell("echo 'half a report'; exit 5"), (ProcessResult{.code = 5, .output = ""}));

  EXPECT_EQ(fault.calls(), 2);
  expectNothingLeft();
}

TEST_F(RunnerFaultTest, AToolWhoseOutputCannotBeReadIsNotWaitedForInVain) {
  const SystemCallFault fault("read", EIO);

  const ProcessResult result = RealProcessRunner().run(HALVO_CHILD_REPORT, {"flood", "1000000"});

  EXPECT_EQ(result, (ProcessResult{.code = SIGPIPE, .output = ""}));
  expectNothingLeft();
}

struct CutRow {
  const char* name;
  const char* before;  // what the tool has written, as printf(1) takes it, when the first read returns
  const char* after;
  const char* output;
};

class OutputReadInTwoPieces : public RunnerFaultTest, public testing::WithParamInterface<CutRow> {
 protected:
  // The tool writes its second piece once the first has been read.
  ProcessResult run() const {
    const std::string fifo = directory_.makeFifo("go");
    const SystemCallHook secondRead("read", 2, [&] { std::ofstream(fifo) << "go\n"; });
    return runShell(std::string("printf '") + GetParam().before + "'; read line < '" + fifo + "'; printf '" +
                    GetParam().after + "'");
  }

  TemporaryDirectory directory_;
};

TEST_P(OutputReadInTwoPieces, IsJudgedAsOneText) {
  EXPECT_EQ(run(), (ProcessResult{.code = 0, .output = GetParam().output}));
}

INSTANTIATE_TEST_SUITE_P(Table, OutputReadInTwoPieces,
                         testing::Values(CutRow{"AfterTheFirstByteOfFour", R"(a\360)", R"(\237\224\212b)",
                                                "a\xF0\x9F\x94\x8A"
                                                "b"},
                                         CutRow{"AfterTheSecondByteOfFour", R"(a\360\237)", R"(\224\212b)",
                                                "a\xF0\x9F\x94\x8A"
                                                "b"},
                                         CutRow{"AfterTheThirdByteOfFour", R"(a\360\237\224)", R"(\212b)",
                                                "a\xF0\x9F\x94\x8A"
                                                "b"},
                                         CutRow{"BetweenTwoCharacters", R"(\303\251)", R"(\303\251)",
                                                "\xC3\xA9\xC3\xA9"},
                                         CutRow{"BeforeAByteThatBelongsToNone", "a", R"(\251b)", ""},
                                         CutRow{"InsideACharacterThatAnotherByteEnds", R"(a\303)", "(", ""},
                                         CutRow{"BehindAnIllFormedByte", R"(a\377b)", "c", ""},
                                         CutRow{"BeforeACharacterThatNeverEnds", "a", R"(b\342\202)", ""}),
                         [](const auto& row) { return row.param.name; });

// Waiting for the tool's end.

TEST_F(RunnerFaultTest, AnInterruptedWaitGoesOn) {
  const SystemCallFault fault("waitpid", EINTR, 1, 3);

  EXPECT_EQ(runShell("echo done; exit 6"), (ProcessResult{.code = 6, .output = "done\n"}));

  EXPECT_EQ(fault.calls(), 4);
}

TEST_F(RunnerFaultTest, ALostExitStatusIsNoSuccess) {
  const SystemCallFault fault("waitpid", ECHILD);

  EXPECT_EQ(runShell("echo done"), (ProcessResult{.code = -1, .output = "done\n"}));

  EXPECT_EQ(fault.calls(), 1);
  EXPECT_GT(::waitpid(-1, nullptr, 0), 0);
}

// The state that the process was started in.

TEST_F(RunnerFaultTest, AMissingNullDeviceIsTriedOnce) {
  const SystemCallFault fault("open", ENOENT, 1, 10);

  halvoPutInheritedStateInOrder();

  EXPECT_EQ(fault.calls(), 1);
  expectNothingLeft();
}

}  // namespace
}  // namespace halvo
