#include "sim/transport/ServiceSocket.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/support/Processes.h"
#include "sim/transport/testing/LaunchedService.h"

namespace halvo::sim {
namespace {

using testing::Each;

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

TEST(PeerTokenTest, NamesIdsProcessAndVersion) {
  const LaunchedService service("com.halvo.token");
  const UniqueDescriptor client = connectRaw(service.socket());
  const UniqueDescriptor accepted(::accept(3, nullptr, nullptr));
  const PeerIdentity peer = peerIdentityOf(accepted.get());

  const auto pid = static_cast<unsigned>(::getpid());
  const audit_token_t expected = {
      {::geteuid(), ::geteuid(), ::getegid(), ::geteuid(), ::getegid(), pid, 0, processVersion(::getpid()).value()}};
  EXPECT_EQ(peer.pid, ::getpid());
  EXPECT_THAT(peer.token.val, testing::ElementsAreArray(expected.val));
}

TEST(PeerTokenTest, ProcessThatHasEndedHasTheZeroToken) {
  const LaunchedService service("com.halvo.token");
  const pid_t child = ::fork();
  if (child == 0) {
    static_cast<void>(connectRaw(service.socket()).release());
    ::_exit(0);
  }
  ::waitpid(child, nullptr, 0);
  const UniqueDescriptor accepted(::accept(3, nullptr, nullptr));
  const PeerIdentity peer = peerIdentityOf(accepted.get());

  EXPECT_EQ(peer.pid, child);
  EXPECT_THAT(peer.token.val, Each(0U));
}

TEST(PeerTokenTest, DescriptorThatIsNoSocketHasTheZeroToken) {
  const PeerIdentity peer = peerIdentityOf(STDIN_FILENO);

  EXPECT_EQ(peer.pid, 0);
  EXPECT_THAT(peer.token.val, Each(0U));
}

}  // namespace
}  // namespace halvo::sim
