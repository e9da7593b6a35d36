#include "client/InterruptHandling.h"

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
      testing::ExitedWithCode(130), "interrupted; what the helper has begun, it finishes");
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
