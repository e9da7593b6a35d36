#include "sim/transport/ServiceSocket.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "sim/transport/testing/LaunchedService.h"

namespace halvo::sim {
namespace {

TEST(LaunchSocketTest, PassedSocketOfTheServiceIsFound) {
  const LaunchedService service("com.halvo.launched");

  EXPECT_EQ(launchSocketFor("com.halvo.launched"), 3);
}

TEST(LaunchSocketTest, SocketIsNotPassedOnToChildren) {
  const LaunchedService service("com.halvo.launched");
  ::fcntl(3, F_SETFD, 0);

  ASSERT_EQ(launchSocketFor("com.halvo.launched"), 3);
  EXPECT_EQ(::fcntl(3, F_GETFD), FD_CLOEXEC);
}

TEST(LaunchSocketTest, SocketOfAnotherServiceIsNotTaken) {
  const LaunchedService service("com.halvo.launched");

  EXPECT_EQ(launchSocketFor("com.halvo.other"), std::nullopt);
}

TEST(LaunchSocketTest, SocketPassedToAnotherProcessIsNotTaken) {
  const LaunchedService service("com.halvo.launched");
  ::setenv("LISTEN_PID", "1", 1);

  EXPECT_EQ(launchSocketFor("com.halvo.launched"), std::nullopt);
}

TEST(LaunchSocketTest, ConnectedSocketIsNotTaken) {
  const LaunchedService service("com.halvo.launched");
  const UniqueDescriptor connected = connectRaw(service.socket());
  ::dup3(connected.get(), 3, O_CLOEXEC);

  EXPECT_EQ(launchSocketFor("com.halvo.launched"), std::nullopt);
}

TEST(LaunchSocketTest, ProgramThatLaunchdDidNotStartHasNone) {
  ::unsetenv("LISTEN_FDS");

  EXPECT_EQ(launchSocketFor("com.halvo.launched"), std::nullopt);
}

}  // namespace
}  // namespace halvo::sim
