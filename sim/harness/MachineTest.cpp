#include "sim/harness/Machine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include "sim/support/ChildProcess.h"

namespace halvo::sim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::ThrowsMessage;

class MachineTest : public testing::Test {
 protected:
  CommandResult shell(const std::string& script, unsigned user = 0) { return mac.run(user, {"/bin/sh", "-c", script}); }

  std::optional<JobState> job(const std::string& label) const {
    const auto jobs = mac.jobs();
    const auto found = std::ranges::find_if(jobs, [&](const JobState& state) { return state.label == label; });
    return found == jobs.end() ? std::nullopt : std::optional(*found);
  }

  Machine mac;
};

TEST_F(MachineTest, RunsCommandsAndCollectsWhatTheyPrint) {
  mac.start();

  EXPECT_EQ(shell("echo out; echo err >&2; exit 3"), (CommandResult{3, "out\n", "err\n"}));
}

TEST_F(MachineTest, ACommandThatDoesNotExistIs127) {
  mac.start();

  EXPECT_EQ(mac.run(0, {"/bin/nothing"}),
            (CommandResult{127, "", "Cannot run /bin/nothing in the machine: No such file or directory.\n"}));
}

TEST_F(MachineTest, CommandsRunAsTheUserAskedFor) {
  mac.start();
  if (!mac.supportsSeveralUsers()) GTEST_SKIP() << "This host allows one account only.";

  EXPECT_EQ(shell("id -u; id -g; echo $HOME", 501).out, "501\n20\n/Users/user501\n");
}

TEST_F(MachineTest, CommandsRunAtTheSameTime) {
  mac.start();

  auto waiting = mac.runAsync(0, {"/bin/sh", "-c", "mkfifo /tmp/f; cat /tmp/f"});
  EXPECT_EQ(shell("while ! test -p /tmp/f; do :; done; echo met > /tmp/f").status, 0);

  EXPECT_EQ(waiting.get().out, "met\n");
}

TEST_F(MachineTest, WhatACommandLeavesInTheBackgroundDelaysNothing) {
  mac.start();

  EXPECT_EQ(shell("sleep 1000 & echo done").out, "done\n");
}

TEST_F(MachineTest, ACommandIsAnsweredWhenTheMachineStops) {
  mac.start();
  auto endless = mac.runAsync(0, {"/bin/sleep", "1000"});

  mac.stop();

  EXPECT_EQ(endless.get().status, -1);
}

TEST_F(MachineTest, StartsAgainWithWhatIsOnDisk) {
  mac.start();
  shell("echo kept > /Library/kept");
  mac.stop();

  mac.start();

  EXPECT_EQ(shell("cat /Library/kept").out, "kept\n");
}

TEST_F(MachineTest, AMachineThatIsOffRunsNothing) { EXPECT_THROW(mac.run(0, {"/bin/true"}), std::runtime_error); }

TEST_F(MachineTest, AMachineThatCannotStartSaysWhy) {
  std::filesystem::remove(mac.path("/bin/sh"));

  EXPECT_THAT([&] { mac.start(); }, ThrowsMessage<std::runtime_error>(HasSubstr("Cannot run /bin/sh in the machine")));
}

TEST_F(MachineTest, PathsFollowTheMachinesLinks) {
  EXPECT_EQ(mac.path("/var/log/x").string().substr(mac.path("/").string().size()), "private/var/log/x");
}

TEST_F(MachineTest, FilesAndStateGoBothWays) {
  mac.start();

  mac.writeFile("/tmp/new/file", "text");
  mac.writeState("audio-devices", "1\n");

  EXPECT_EQ(shell("cat /private/tmp/new/file /sim/audio-devices").out, "text1\n");
  EXPECT_EQ(mac.readFile("/tmp/new/file"), "text");
  EXPECT_EQ(mac.readState("audio-devices"), "1\n");
}

TEST_F(MachineTest, KnowsTheJobs) {
  mac.start();

  ASSERT_TRUE(job("com.apple.audio.coreaudiod"));
  EXPECT_TRUE(job("com.apple.audio.coreaudiod")->pid);
  ASSERT_TRUE(job("com.halvo.helper"));
  EXPECT_FALSE(job("com.halvo.helper")->pid);
}

TEST_F(MachineTest, KnowsWhichToolsRan) {
  mac.start();

  shell("launchctl print gui/777; killall coreaudiod");

  const auto calls = mac.calls();
  ASSERT_EQ(calls.size(), 2U);
  EXPECT_EQ(calls[0].tool, "/bin/launchctl");
  EXPECT_THAT(calls[0].arguments, ElementsAre("print", "gui/777"));
  EXPECT_EQ(calls[0].status, 112);
  EXPECT_EQ(calls[1].tool, "/usr/bin/killall");
  EXPECT_EQ(calls[1].status, 0);
}

TEST_F(MachineTest, KillallAlwaysFindsTheAudioDaemon) {
  mac.start();

  EXPECT_EQ(shell("killall coreaudiod && killall coreaudiod && killall coreaudiod && killall coreaudiod").status, 0);
}

TEST_F(MachineTest, AJobDoesNotHoldTheOutputOfTheToolThatLoadedIt) {
  mac.start();
  const std::string plist = "/System/Library/LaunchDaemons/com.apple.audio.coreaudiod.plist";
  shell("launchctl bootout system/com.apple.audio.coreaudiod");

  EXPECT_EQ(shell("launchctl bootstrap system " + plist + " 2>&1 | cat").status, 0);

  EXPECT_TRUE(job("com.apple.audio.coreaudiod")->pid);
}

TEST_F(MachineTest, AMachineThatRunsCannotBeStartedAgain) {
  mac.start();

  const CommandResult second = runChild({HALVO_SIM_PROGRAM, "run", mac.path("/").string(), "--", "/usr/bin/true"});

  EXPECT_EQ(second.status, 75);
  EXPECT_EQ(second.err, "This machine is running already; stop that first, or use another one.\n");
}

TEST_F(MachineTest, TheApplicationCanBePutBackWhileTheMachineRuns) {
  mac.start();
  shell("launchctl bootout system/com.halvo.helper; rm -r /Applications/Halvo.app");

  EXPECT_EQ(runChild({HALVO_SIM_PROGRAM, "app", mac.path("/").string()}).status, 0);

  EXPECT_TRUE(job("com.halvo.helper"));
  EXPECT_TRUE(std::filesystem::exists(mac.path("/Applications/Halvo.app/Contents/MacOS/halvo-helper")));
}

TEST_F(MachineTest, TwoMachinesDoNotSeeEachOther) {
  Machine other;
  mac.start();
  other.start();

  shell("echo mine > /tmp/x");

  EXPECT_EQ(other.run(0, {"/bin/cat", "/tmp/x"}).status, 1);
}

TEST(ToolCallsTest, ReadsCalls) {
  const auto calls = parseToolCalls(R"({"time":"t","began":5,"ended":7,"tool":"/bin/x","arguments":["a"],"status":3})"
                                    "\n");

  EXPECT_THAT(calls, ElementsAre(ToolCall{"t", "/bin/x", {"a"}, 3, 5, 7}));
}

TEST(ToolCallsTest, ALineThatIsStillBeingWrittenIsLeftOut) {
  EXPECT_THAT(parseToolCalls("{\"time\":\"t\",\"to"), IsEmpty());
}

TEST(ToolCallsTest, ALineThatIsNoCallIsNotOverlooked) { EXPECT_THROW(parseToolCalls("garbage\n"), std::runtime_error); }

}  // namespace
}  // namespace halvo::sim
