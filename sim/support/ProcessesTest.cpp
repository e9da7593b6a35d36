#include "sim/support/Processes.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace halvo::sim {
namespace {

TEST(ProcessesTest, TheSameProcessKeepsItsVersion) {
  const auto first = processVersion(::getpid());

  ASSERT_TRUE(first.has_value());
  EXPECT_EQ(processVersion(::getpid()), first);
}

TEST(ProcessesTest, AProgramNameCannotShiftTheFields) {
  const auto before = processVersion(::getpid());
  ASSERT_EQ(::prctl(PR_SET_NAME, ") R 1 2 (3"), 0);

  const auto after = processVersion(::getpid());

  EXPECT_EQ(after, before);
}

TEST(ProcessesTest, AProcessThatStartedAtAnotherTimeHasAnotherVersion) {
  EXPECT_NE(processVersion(::getpid()), processVersion(1));
}

TEST(ProcessesTest, AProcessThatHasGoneHasNone) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(0);
  ASSERT_EQ(::waitpid(child, nullptr, 0), child);

  EXPECT_EQ(processVersion(child), std::nullopt);
}

TEST(ProcessesTest, NumbersThatNoProcessHasHaveNone) {
  EXPECT_EQ(processVersion(0), std::nullopt);
  EXPECT_EQ(processVersion(-1), std::nullopt);
}

}  // namespace
}  // namespace halvo::sim
