#include <fcntl.h>
#include <gmock/gmock.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <array>
#include <csignal>
#include <fstream>

#include "sim/support/TemporaryDirectory.h"
#include "sim/tools/testing/ToolMachine.h"

namespace halvo::sim {
namespace {

// A program as launchd starts it. SIGTERM is held back until the program asks for it, so that a test may send it early.
class RunningProgram {
 public:
  explicit RunningProgram(std::string program, std::string argument = "") {
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t heldBack;
    sigemptyset(&heldBack);
    sigaddset(&heldBack, SIGTERM);
    posix_spawnattr_setsigmask(&attributes, &heldBack);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    std::array<char*, 3> words = {program.data(), argument.empty() ? nullptr : argument.data(), nullptr};
    ::posix_spawn(&pid_, program.c_str(), nullptr, &attributes, words.data(), environ);
    posix_spawnattr_destroy(&attributes);
  }

  pid_t pid() const { return pid_; }

  // The wait status after launchd's request to end.
  int end() const {
    ::kill(pid_, SIGTERM);
    return waitForEnd();
  }
  int waitForEnd() const {
    int status = -1;
    ::waitpid(pid_, &status, 0);
    return status;
  }

 private:
  pid_t pid_ = -1;
};

std::filesystem::path brokerOfVersion(const TemporaryDirectory& directory, const std::string& version) {
  const auto program = directory.write("halvo-broker", productFile(version, "/halvo-broker"));
  std::filesystem::permissions(program, std::filesystem::perms{0755});
  return program;
}

// Blocks until the program has written the line.
std::string firstLine(const std::filesystem::path& pipe) {
  std::ifstream stream(pipe);
  std::string line;
  std::getline(stream, line);
  return line;
}

TEST(BrokerTest, SaysWhichVersionStartedAndRunsUntilItIsToldToEnd) {
  const TemporaryDirectory directory;
  const std::filesystem::path program = brokerOfVersion(directory, "1.2.0");
  ASSERT_EQ(::mkfifo((directory.path() / "broker.log").c_str(), 0600), 0);

  const RunningProgram broker(program, directory.path());
  const std::string line = firstLine(directory.path() / "broker.log");

  EXPECT_EQ(line, "broker 1.2.0 started pid " + std::to_string(broker.pid()));
  EXPECT_EQ(broker.end(), 0);
}

TEST(BrokerTest, EveryStartAddsALine) {
  const TemporaryDirectory directory;
  const std::filesystem::path program = brokerOfVersion(directory, "2");
  const RunningProgram first(program, directory.path() / "log");
  ASSERT_EQ(first.end(), 0);

  const RunningProgram second(program, directory.path() / "log");
  ASSERT_EQ(second.end(), 0);

  EXPECT_EQ(directory.read("log/broker.log"), "broker 2 started pid " + std::to_string(first.pid()) +
                                                  "\nbroker 2 started pid " + std::to_string(second.pid()) + "\n");
}

TEST(BrokerTest, FailsWhenItCannotWriteItsLog) {
  const TemporaryDirectory directory;
  directory.write("in-the-way", "");

  const RunningProgram broker(brokerOfVersion(directory, "2"), directory.path() / "in-the-way");

  EXPECT_EQ(WEXITSTATUS(broker.waitForEnd()), 1);
}

TEST(AgentTest, RunsUntilItIsToldToEnd) {
  EXPECT_EQ(RunningProgram(HALVO_DAEMON_PROGRAM).end(), 0);
  EXPECT_EQ(RunningProgram(COREAUDIOD_PROGRAM).end(), 0);
}

}  // namespace
}  // namespace halvo::sim
