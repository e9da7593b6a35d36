#include "client/InterruptHandling.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

namespace halvo {
namespace {

TEST(InterruptHandlingDeathTest, InterruptEndsWithItsOwnStatusAndASentence) {
  EXPECT_EXIT(
      {
        endWithStatusOnInterrupt();
        ::raise(SIGINT);
      },
      testing::ExitedWithCode(130),
      testing::StrEq("\nhalvo-app: interrupted; what the helper has begun, it finishes\n"));
}

TEST(InterruptHandlingDeathTest, TerminationEndsItWithoutAWord) {
  EXPECT_EXIT(
      {
        endWithStatusOnInterrupt();
        ::raise(SIGTERM);
      },
      testing::KilledBySignal(SIGTERM), testing::IsEmpty());
}

TEST(InterruptHandlingDeathTest, AHangUpThatWasToBeIgnoredIsIgnored) {
  EXPECT_EXIT(
      {
        ::signal(SIGHUP, SIG_IGN);
        endWithStatusOnInterrupt();
        ::raise(SIGHUP);
        ::_exit(7);
      },
      testing::ExitedWithCode(7), "");
}

}  // namespace
}  // namespace halvo
