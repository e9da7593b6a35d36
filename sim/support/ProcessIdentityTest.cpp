#include "sim/support/ProcessIdentity.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace halvo::sim {
namespace {

TEST(ProcessIdentityTest, TheSameProcessKeepsItsVersion) {
  const auto first = processVersion(::getpid());

  ASSERT_TRUE(first.has_value());
  EXPECT_EQ(processVersion(::getpid()), first);
}

TEST(ProcessIdentityTest, AProgramNameCannotShiftTheFields) {
  const auto before = processVersion(::getpid());
  ASSERT_EQ(::prctl(PR_SET_NAME, ") R 1 2 (3"), 0);

  const auto after = processVersion(::getpid());

  EXPECT_EQ(after, before);
}

TEST(ProcessIdentityTest, AProcessThatStartedAtAnotherTimeHasAnotherVersion) {
  EXPECT_NE(processVersion(::getpid()), processVersion(1));
}

TEST(ProcessIdentityTest, AProcessThatHasGoneHasNone) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(0);
  ASSERT_EQ(::waitpid(child, nullptr, 0), child);

  EXPECT_EQ(processVersion(child), std::nullopt);
}

TEST(ProcessIdentityTest, NumbersThatNoProcessHasHaveNone) {
  EXPECT_EQ(processVersion(0), std::nullopt);
  EXPECT_EQ(processVersion(-1), std::nullopt);
}

}  // namespace
}  // namespace halvo::sim
