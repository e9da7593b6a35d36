#include "client/InterruptHandling.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace halvo
