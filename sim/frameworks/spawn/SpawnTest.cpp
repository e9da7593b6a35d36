#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>

namespace halvo::sim {
namespace {

// The descriptors that the shell finds open, without the one it uses for looking.
constexpr const char* kListDescriptors =
    "for d in 0 1 2 3 4 5 6 7 8 9; do [ -e /proc/$$/fd/$d ] && printf '%s ' $d; done";

class SpawnTest : public testing::Test {
 protected:
  SpawnTest() {
    posix_spawnattr_init(&attributes_);
    posix_spawn_file_actions_init(&actions_);
    EXPECT_EQ(::pipe2(pipe_.data(), O_CLOEXEC), 0);
  }
  ~SpawnTest() override {
    ::close(pipe_[0]);
    ::close(pipe_[1]);
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }

  int spawn(const char* program, const char* script, pid_t& child) {
    std::array<char*, 4> arguments = {const_cast<char*>(program), const_cast<char*>("-c"), const_cast<char*>(script),
                                      nullptr};
    std::array<char*, 2> environment = {const_cast<char*>("PATH=/usr/bin:/bin"), nullptr};
    return posix_spawn(&child, program, &actions_, &attributes_, arguments.data(), environment.data());
  }

  // Runs a shell whose output goes into the pipe; answers the output, which must fit into the pipe.
  std::string output(const char* script) {
    posix_spawn_file_actions_adddup2(&actions_, pipe_[1], STDOUT_FILENO);
    pid_t child = -1;
    EXPECT_EQ(spawn("/bin/sh", script, child), 0);
    EXPECT_EQ(::waitpid(child, &status_, 0), child);
    ::close(pipe_[1]);
    pipe_[1] = -1;
    std::array<char, 4096> buffer{};
    const ssize_t count = ::read(pipe_[0], buffer.data(), buffer.size());
    return {buffer.data(), static_cast<std::size_t>(count)};
  }

  posix_spawnattr_t attributes_ = nullptr;
  posix_spawn_file_actions_t actions_ = nullptr;
  std::array<int, 2> pipe_{};
  int status_ = 0;
};

// An inheritable descriptor with a number that the shell looks at.
class LeakyDescriptor {
 public:
  LeakyDescriptor() {
    const int null = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::dup2(null, 9);
    ::close(null);
  }
  LeakyDescriptor(const LeakyDescriptor&) = delete;
  LeakyDescriptor& operator=(const LeakyDescriptor&) = delete;
  ~LeakyDescriptor() { ::close(9); }
};

TEST_F(SpawnTest, OnlyNamedDescriptorsReachTheChildWhenClosingIsTheDefault) {
  const LeakyDescriptor leaky;
  posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_CLOEXEC_DEFAULT);
  posix_spawn_file_actions_addinherit_np(&actions_, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions_, pipe_[1], STDERR_FILENO);

  EXPECT_EQ(output(kListDescriptors), "0 1 2 ");
}

TEST_F(SpawnTest, StandardInputIsClosedTooWhenNobodyNamesIt) {
  posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_CLOEXEC_DEFAULT);

  EXPECT_EQ(output(kListDescriptors), "1 ");
}

TEST_F(SpawnTest, DescriptorsLeakWhenClosingIsNotTheDefault) {
  const LeakyDescriptor leaky;

  const std::string open = output(kListDescriptors);

  EXPECT_NE(open.find("0 "), std::string::npos);
  EXPECT_NE(open.find("9 "), std::string::npos);
}

TEST_F(SpawnTest, AnInheritedDescriptorLosesItsCloseOnExecFlag) {
  ASSERT_EQ(::dup3(pipe_[1], 8, O_CLOEXEC), 8);
  posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_CLOEXEC_DEFAULT);
  posix_spawn_file_actions_addinherit_np(&actions_, 8);

  EXPECT_EQ(output("printf inherited >&8"), "inherited");
  ::close(8);
}

TEST_F(SpawnTest, ADescriptorDuplicatedOntoItselfKeepsItsCloseOnExecFlag) {
  ASSERT_EQ(::dup3(pipe_[1], 8, O_CLOEXEC), 8);
  ASSERT_EQ(::dup2(pipe_[1], 9), 9);
  posix_spawn_file_actions_adddup2(&actions_, 8, 8);
  posix_spawn_file_actions_adddup2(&actions_, 9, 9);

  EXPECT_EQ(output("for d in 8 9; do [ -e /proc/$$/fd/$d ] && printf '%s ' $d; done"), "9 ");
  ::close(8);
  ::close(9);
}

TEST_F(SpawnTest, ADescriptorDuplicatedOntoItselfIsNamedButNotInherited) {
  ASSERT_EQ(::dup3(pipe_[1], 8, O_CLOEXEC), 8);
  ASSERT_EQ(::dup2(pipe_[1], 9), 9);
  posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_CLOEXEC_DEFAULT);
  posix_spawn_file_actions_adddup2(&actions_, 8, 8);
  posix_spawn_file_actions_adddup2(&actions_, 9, 9);

  EXPECT_EQ(output(kListDescriptors), "1 9 ");
  ::close(8);
  ::close(9);
}

TEST_F(SpawnTest, ADescriptorThatAnEarlierActionMadeMayBeDuplicatedOntoItself) {
  posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_CLOEXEC_DEFAULT);
  posix_spawn_file_actions_adddup2(&actions_, pipe_[1], 8);
  posix_spawn_file_actions_adddup2(&actions_, 8, 8);

  EXPECT_EQ(output(kListDescriptors), "1 8 ");
}

TEST_F(SpawnTest, TheChildLeadsItsOwnProcessGroup) {
  posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETPGROUP);
  posix_spawnattr_setpgroup(&attributes_, 0);

  EXPECT_EQ(output("read -r pid comm state ppid group rest < /proc/$$/stat; [ $pid = $group ] && printf leader"),
            "leader");
}

TEST_F(SpawnTest, SignalsAreAsTheAttributesSay) {
  sigset_t all{};
  sigset_t none{};
  sigset_t before{};
  sigfillset(&all);
  sigemptyset(&none);
  ASSERT_EQ(::pthread_sigmask(SIG_SETMASK, &all, &before), 0);
  const auto previous = ::signal(SIGTERM, SIG_IGN);
  posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  posix_spawnattr_setsigmask(&attributes_, &none);
  sigdelset(&all, SIGKILL);
  sigdelset(&all, SIGSTOP);
  posix_spawnattr_setsigdefault(&attributes_, &all);

  static_cast<void>(output("kill -TERM $$; printf survived"));

  EXPECT_TRUE(WIFSIGNALED(status_));
  EXPECT_EQ(WTERMSIG(status_), SIGTERM);
  ::signal(SIGTERM, previous);
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST_F(SpawnTest, FreshAttributesAreNothingToRestOn) {
  posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK);
  EXPECT_EQ(output("kill -TERM $$; printf blocked"), "blocked");

  pid_t child = -1;
  posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETPGROUP);
  EXPECT_NE(spawn("/bin/true", "", child), 0);
}

TEST_F(SpawnTest, AProgramThatCannotStartIsAReturnValue) {
  pid_t child = -1;

  EXPECT_EQ(spawn("/nonexistent", "", child), ENOENT);
  EXPECT_EQ(spawn("/etc/passwd", "", child), EACCES);
}

TEST_F(SpawnTest, AttributesAndActionsMayBeLeftOut) {
  std::array<char*, 2> arguments = {const_cast<char*>("/bin/true"), nullptr};
  pid_t child = -1;

  ASSERT_EQ(posix_spawn(&child, "/bin/true", nullptr, nullptr, arguments.data(), arguments.data() + 1), 0);

  EXPECT_EQ(::waitpid(child, &status_, 0), child);
  EXPECT_EQ(status_, 0);
}

TEST_F(SpawnTest, WrongArgumentsAreRefused) {
  posix_spawnattr_t none = nullptr;

  EXPECT_EQ(posix_spawnattr_setflags(&none, 0), EINVAL);
  constexpr short kStartSuspended = 0x80;
  EXPECT_EQ(posix_spawnattr_setflags(&attributes_, kStartSuspended), EINVAL);
  EXPECT_EQ(posix_spawn_file_actions_adddup2(&actions_, 0, -1), EBADF);
}

TEST_F(SpawnTest, InheritingADescriptorThatIsNotOpenFails) {
  pid_t child = -1;
  posix_spawn_file_actions_addinherit_np(&actions_, 999);

  EXPECT_EQ(spawn("/bin/true", "", child), EBADF);
}

}  // namespace
}  // namespace halvo::sim
